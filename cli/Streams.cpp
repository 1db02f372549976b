// SPDX-License-Identifier: Apache-2.0

#include "Streams.h"

#include "Descriptors.h"
#include "ForeignOutput.h"
#include "Masking.h"

#include <cstdlib>
#include <exception>
#include <optional>

namespace Halvern::Cli {

namespace {

// Without TakeStreams, as in a program that only uses parts of the command, the usual ones.
int results = StandardOutput;
int messages = StandardError;
QString resultsFailure;
std::optional<ForeignOutput> foreign;

/// NoDescriptor for one that the caller closed.
int Taken(bool wasOpen, int standard)
{
    return wasOpen ? DuplicateOf(standard) : NoDescriptor;
}

void EndForeignOutput()
{
    foreign.reset();
}

QString TextOfCurrentException()
{
    const std::exception_ptr current = std::current_exception();
    if (!current)
        return QStringLiteral("std::terminate was called");
    try {
        std::rethrow_exception(current);
    } catch (const std::exception& exception) {
        return QString::fromLocal8Bit(exception.what());
    } catch (...) {
        return QStringLiteral("of an unknown kind");
    }
}

/// In place of the C++ library's own, whose words would wait in the pipe of foreign output while
/// the process ends.
[[noreturn]] void OnTerminate()
{
    EndForeignOutput();
    WriteMessages(
        ("corsync: ended by an exception: " + Masked(TextOfCurrentException()) + '\n').toUtf8());
    std::abort();
}

} // namespace

void TakeStreams()
{
    const bool hasOutput = IsOpen(StandardOutput);
    const bool hasError = IsOpen(StandardError);
    OpenMissingDescriptors();
    SurviveBrokenPipes();
    results = Taken(hasOutput, StandardOutput);
    messages = Taken(hasError, StandardError);
    foreign.emplace(messages);
    // After the destructors of what was loaded later, which may print.
    std::atexit(EndForeignOutput);
    std::set_terminate(OnTerminate);
}

void WriteResults(const QByteArray& bytes)
{
    if (bytes.isEmpty() || !resultsFailure.isEmpty())
        return;
    resultsFailure =
        results == NoDescriptor ? QStringLiteral("it is closed") : WriteAll(results, bytes);
}

QString ResultsFailure()
{
    return resultsFailure;
}

void WriteMessages(const QByteArray& bytes)
{
    if (messages != NoDescriptor)
        (void)WriteAll(messages, bytes);
}

int MessagesDescriptor()
{
    return messages;
}

bool IsStandardInputTerminal()
{
    return IsTerminal(StandardInput);
}

bool IsStandardErrorTerminal()
{
    return messages != NoDescriptor && IsTerminal(messages);
}

int TerminalWidth()
{
    return WidthOfTerminal(messages);
}

} // namespace Halvern::Cli
