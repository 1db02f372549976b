// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QString>

#include <cstdio>

namespace Halvern::Isolation {

/// How a crashed process ended, in words, from the code that QProcess gives for it.
QString EndingText(int code);

/// Where the host reads requests and writes answers.
struct Streams
{
    std::FILE* requests = nullptr;
    std::FILE* answers = nullptr;
};

/// Takes standard input and output for messages: what a plug-in prints goes to standard error from
/// then on, and it reads nothing. Programs that it starts do not inherit them. Null when the system
/// refuses.
Streams TakeStreams();

/// The process gets no more memory than that, as far as the system can say so. 0: no limit.
void LimitMemory(long long bytes);

/// Ctrl-C at a terminal is for the program that started this one.
void IgnoreInterrupts();

} // namespace Halvern::Isolation
