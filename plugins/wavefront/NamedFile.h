// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "Statements.h"

#include "KitNames.h"
#include "pluginkit/FileEdits.h"

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace Halvern::Formats::Wavefront {

/// The words [first, end) of a statement, which are one name: names may hold blanks, and only the
/// files that exist tell where one ends.
struct NameSpan
{
    std::size_t first;
    std::size_t end;

    bool operator==(const NameSpan&) const = default;
};

/// A statement with the names of files in it.
class NamingStatement
{
public:
    /// `usual` is the span that the name has unless the files around say something else.
    NamingStatement(std::string id, Statement statement, NameSpan usual);

    const Statement& Text() const { return m_statement; }
    const std::vector<Word>& Words() const { return m_words; }
    NameSpan Usual() const { return m_usual; }
    std::string_view Raw(NameSpan span) const;

    /// The statement's id, and for any span but the usual one its words: "mtllib 1 words 2-3".
    std::string IdOf(NameSpan span) const;
    /// The span that an id of this statement says; nothing for an id of another one.
    std::optional<NameSpan> SpanOf(std::string_view id) const;

    /// The path that a span names, for a file in `folder`.
    std::string PathOf(NameSpan span, const std::filesystem::path& folder) const;
    /// Puts another path in the place of the span; FormatError for one that no line can hold.
    FileEdit EditOf(NameSpan span, std::string_view path) const;

private:
    std::string m_id;
    Statement m_statement;
    std::vector<Word> m_words;
    NameSpan m_usual;
};

/// Throws a FormatError for a path that cannot stand at the end of a line.
void RequireFitsLine(std::string_view path);

} // namespace Halvern::Formats::Wavefront
