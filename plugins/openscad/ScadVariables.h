// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "ScadLexer.h"

#include <map>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace Halvern::Formats::OpenScad {

/// What the variables of a model can be, gathered while its tokens come in: from assignments, from
/// the defaults of parameters and from the arguments of calls. Variables of one name are taken for
/// one, wherever they stand.
///
///     module part(name = "a.stl") { import(name); }  part("b.stl");  part(other);
///
/// Here `name` can be "a.stl", "b.stl" and whatever `other` can be.
class ScadVariables
{
public:
    /// Throws a FormatError when too many strings are assigned. Requires: no bracket is closed that
    /// was not opened.
    void Take(const Token& token);

    struct Text
    {
        /// "variable name 1" for an assigned text, "variable name passed 1" for an argument that
        /// only its place gives to the variable. DO NOT CHANGE THESE TEXTS: the sync database holds
        /// them.
        std::string id;
        Token token;
    };
    struct Values
    {
        /// What the variables can be, each string of the file once.
        std::vector<Text> texts;
        /// Those of the variables that can be something else, too, which only running the model, or
        /// another file, could tell.
        std::set<std::string> open;
    };
    Values ValuesOf(const std::set<std::string>& variables) const;

private:
    /// A bracket that is open, or the file.
    struct Level
    {
        enum Kind
        {
            Other,
            /// The parameters of a definition.
            Parameters,
            /// The arguments of a call.
            Arguments,
            /// Those of a call that names a file, which is looked at elsewhere.
            FileArguments
        };
        Kind kind = Other;
        /// What is defined or called.
        std::string owner;
        std::size_t unnamedCount = 0;
        std::size_t namedCount = 0;
        /// What stands here since the last comma or semicolon: "name =" and a number of tokens.
        std::string name;
        Token first;
        std::size_t size = 0;
    };
    /// Something that gives a variable its value.
    struct Source
    {
        std::vector<Token> texts;
        std::set<std::string> variables;
        bool hasOther = false;
    };
    struct Calls
    {
        /// By the place of the argument.
        std::map<std::size_t, Source> unnamed;
        std::map<std::string, Source> named;
    };
    /// A definition's name and a place among its parameters.
    using Place = std::pair<std::string, std::size_t>;

    void Open(const Token& bracket);
    void EndValue();
    void EndParameter(Level& level);
    void EndArgument(Level& level);
    void Assign(const Level& level);
    void Note(Source* source, const Level& level);
    template <typename Map>
    typename Map::mapped_type* Entry(Map& map, const typename Map::key_type& key,
                                     std::size_t bytes);
    bool HasRoomFor(std::size_t bytes);

    /// All that gives one variable its value.
    struct Sources
    {
        std::vector<Token> assigned;
        std::vector<Token> passed;
        std::set<std::string> variables;
        bool isOpen = false;

        void TakeVariables(const Source& source);
    };
    Sources SourcesOf(const std::string& variable) const;
    void AddArguments(const std::string& parameter, const Place& place, Sources& sources) const;

    std::vector<Level> m_levels = std::vector<Level>(1);
    /// The last tokens, the latest first.
    Token m_last[2];
    std::map<std::string, Source> m_assigned;
    /// By the parameter's name.
    std::map<std::string, std::set<Place>> m_parameters;
    std::map<std::string, Calls> m_calls;
    std::size_t m_textCount = 0;
    std::size_t m_bytes = 0;
};

} // namespace Halvern::Formats::OpenScad
