// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "KitNames.h"
#include "pluginkit/FileScanner.h"

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace Halvern::Formats::Step {

/// A string of a statement, undecoded.
struct StepString
{
    std::string raw;
    /// The bytes between the apostrophes.
    std::uint64_t begin = 0;
    std::uint64_t end = 0;
};

struct Parameter
{
    enum Kind
    {
        String,
        /// "#12"
        Instance,
        /// Anything else that is one word: $, *, .T., a number, a keyword.
        Word,
        Open,
        Close
    };
    Kind kind;
    StepString string;
    std::uint64_t instance = 0;
};

/// "#12 = KEYWORD(parameters);"
struct Statement
{
    std::uint64_t instance = 0;
    std::string keyword;
    std::uint64_t position = 0;
    /// From the first bracket to the last.
    std::vector<Parameter> parameters;

    /// The first string in the first parameter; null when there is none.
    const StepString* FirstString() const;
};

/// Whether statements of a keyword are asked for; the others are passed over.
using IsWanted = bool (*)(std::string_view keyword);

/// Goes through an exchange file (ISO 10303-21) statement by statement. Throws a FormatError, with
/// its place, for a file that does not begin or end as one.
class StepScanner
{
public:
    StepScanner(const InputFile& file, IsWanted wanted);

    /// The next statement that is wanted; false at the end of the file.
    bool Next(Statement& statement);

    static constexpr std::size_t MaxParameters = 10'000;
    static constexpr std::size_t MaxString = 16 * 1024;

private:
    void RequireBeginning();
    void SkipBlanks();
    void SkipComment();
    void SkipString();
    /// Goes past the next semicolon.
    void SkipStatement(std::uint64_t begin);
    bool ReadHead(Statement& statement);
    void ReadParameters(Statement& statement);
    Parameter ReadParameter(const Statement& statement, char first);
    StepString ReadString();
    std::uint64_t ReadNumber();
    std::string ReadWord();

    FileScanner m_scanner;
    IsWanted m_wanted;
};

} // namespace Halvern::Formats::Step
