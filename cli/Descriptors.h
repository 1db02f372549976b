// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QString>

namespace Halvern::Cli {

// File descriptors as the C library numbers them, where systems differ.

constexpr int StandardInput = 0;
constexpr int StandardOutput = 1;
constexpr int StandardError = 2;
/// In the place of a descriptor: there is none.
constexpr int NoDescriptor = -1;

/// Whether one of the three was given to the process.
bool IsOpen(int descriptor);
/// Gives the null device to those of the three that are not open, so that no file that is opened
/// later gets their numbers, and with them what is printed.
void OpenMissingDescriptors();
/// From now on writing to a pipe that nobody reads any more is an error, not the end of the
/// process. Programs that are started are not affected.
void SurviveBrokenPipes();
/// An abort waits for a moment, so that its words get through the pipe that standard error is.
void DelayAborts();
/// Not inherited by programs that are started.
int DuplicateOf(int descriptor);
/// Lets one of the three lead to where another descriptor leads, also for programs that are
/// started.
void Redirect(int standard, int to);
/// Nobody reads what is written there any more.
void RedirectToNothing(int standard);
void Close(int descriptor);

/// Waits while the other side takes nothing. Empty: all was written; otherwise the system's reason.
QString WriteAll(int descriptor, const QByteArray& bytes);
bool IsTerminal(int descriptor);
/// Columns of a terminal; 80 when unknown.
int WidthOfTerminal(int descriptor);

struct Pipe
{
    int readEnd = NoDescriptor;
    int writeEnd = NoDescriptor;
};

/// Both ends are NoDescriptor when the system has none left. They are not inherited.
Pipe MakePipe();
/// True when there is something to read, also the end of it.
bool WaitForInput(int descriptor, int milliseconds);
/// Empty at the end and at an error.
QByteArray ReadSome(int descriptor);

} // namespace Halvern::Cli
