// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QString>

namespace Halvern::Cli {

// Standard output and standard error as the caller of the process gave them, out of reach of what
// others print in it.

/// Once, before anything is printed or opened. The C library's own streams, and descriptors 1 and
/// 2, are for others from then on (see ForeignOutput).
void TakeStreams();

/// To standard output. After a failure nothing more is written.
void WriteResults(const QByteArray& bytes);
/// Why standard output did not take all results; empty: it did.
QString ResultsFailure();
/// To standard error. That it may be closed or full can be told nobody.
void WriteMessages(const QByteArray& bytes);

/// Where they go; NoDescriptor when nobody wants them.
int MessagesDescriptor();

bool IsStandardInputTerminal();
bool IsStandardErrorTerminal();
/// Columns of the terminal on standard error; 80 when unknown.
int TerminalWidth();

} // namespace Halvern::Cli
