// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "ScadLexer.h"

#include <string>
#include <string_view>
#include <vector>

namespace Halvern::Formats::OpenScad {

/// One of the values that an argument can have: `big ? "a.stl" : name` has two.
struct Value
{
    enum Kind
    {
        Text,
        Variable,
        Expression
    };
    Kind kind;
    /// The string or the variable's name.
    Token token;
};

/// A call of a module or function that takes a file, such as import("a.stl"), while its arguments
/// come in.
class FileCall
{
public:
    static bool NamesFiles(std::string_view name);

    /// `number` counts the calls of this name; `depth` is how many brackets are open inside of it.
    FileCall(std::string name, std::size_t number, std::uint64_t position, std::size_t depth);

    std::size_t Depth() const { return m_depth; }
    std::uint64_t Position() const { return m_position; }
    std::string Id() const { return m_name + ' ' + std::to_string(m_number); }
    /// For people: the call as it stands there, without blanks, cut when it is long.
    std::string Text() const;

    /// The next token of an argument, at a place where `depth` brackets are open.
    void Take(const Token& token, std::size_t depth);
    void EndArgument();

    /// What the argument that names the file can be.
    std::vector<Value> Values() const;

private:
    struct Part
    {
        Token token;
        /// Not inside of brackets of its own.
        bool isOutermost;
    };
    void Note(const Token& token);

    std::string m_name;
    std::size_t m_number;
    std::uint64_t m_position;
    std::size_t m_depth;
    std::string m_text;
    std::vector<Part> m_argument;
    bool m_hasNamelessArgument = false;
    bool m_isNamed = false;
    std::vector<Part> m_file;
};

} // namespace Halvern::Formats::OpenScad
