// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "KitNames.h"
#include "pluginkit/FileScanner.h"

#include <cstdint>
#include <string>

namespace Halvern::Formats::OpenScad {

enum class TokenKind
{
    End,
    Name,
    String,
    /// "include <...>" or "use <...>": the text is what stands between the brackets.
    Include,
    Use,
    /// Anything else: one character, or "==".
    Other
};

struct Token
{
    TokenKind kind = TokenKind::End;
    /// The value of a string, without quotation marks and escapes; cut when it is longer than any
    /// name of a file can be, and then `isCut` is set.
    std::string text;
    bool isCut = false;
    /// The bytes between the quotation marks or brackets; of other tokens, all bytes.
    std::uint64_t begin = 0;
    std::uint64_t end = 0;
};

/// Takes the text of a model apart. Comments are passed over. Throws a FormatError for a comment, a
/// string or an include that has no end, as OpenSCAD does.
class ScadLexer
{
public:
    explicit ScadLexer(const InputFile& file);

    Token Next();

    /// Longer strings are cut.
    static constexpr std::size_t MaxText = 4096;

private:
    bool SkipBlanksAndComments();
    Token ReadString();
    Token ReadName();
    Token ReadIncluded(TokenKind kind);
    void ReadEscape(Token& token);
    void ReadCode(Token& token, int digits);

    FileScanner m_scanner;
    /// A "/" that was taken and opened no comment.
    bool m_hasSlash = false;
};

} // namespace Halvern::Formats::OpenScad
