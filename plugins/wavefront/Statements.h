// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "TextScanner.h"

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace Halvern::Formats::Wavefront {

/// Bytes of a statement's text, without blanks around them.
struct Word
{
    std::size_t begin;
    std::size_t end;
};

/// A line, or several that a backslash at the end joins.
struct Statement
{
    /// In lower case.
    std::string keyword;
    /// What follows the keyword, byte for byte, but for joined lines: the backslash and the line
    /// break between them are blanks. 16-bit text is UTF-8 here.
    std::string text;
    /// The place of the text in the file.
    std::uint64_t begin = 0;
    TextForm form = TextForm::Bytes;

    /// The place in the file of a byte of the text, or of what follows its last one.
    std::uint64_t PlaceOf(std::size_t at) const
    {
        return begin + SizeInFile(std::string_view(text).substr(0, at), form);
    }
    std::vector<Word> Words() const;
};

/// Whether statements of a keyword are asked for; the others are passed over unread.
using IsWanted = bool (*)(std::string_view keyword);

enum class Continuation
{
    /// A backslash before a line break joins two lines: object files.
    Backslash,
    /// It is part of a name: readers of material files take it for that.
    None
};

/// Goes through a file of either kind statement by statement.
class StatementReader
{
public:
    StatementReader(const InputFile& file, IsWanted wanted, Continuation continuation);

    /// The next statement that is wanted; nothing at the end of the file. Throws a FormatError for
    /// one that is longer than MaxStatement, and for 16-bit text that is none.
    std::optional<Statement> Next();

    /// More than the longest name in its longest form.
    static constexpr std::size_t MaxStatement = 16 * 1024;

private:
    std::string ReadKeyword();
    std::string ReadText();
    void SkipLine();
    bool JoinsLines(std::string* text);

    TextScanner m_scanner;
    IsWanted m_wanted;
    Continuation m_continuation;
};

} // namespace Halvern::Formats::Wavefront
