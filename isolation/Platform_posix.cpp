// SPDX-License-Identifier: Apache-2.0

#include "isolation/Platform.h"

#include <csignal>
#include <cstring>

#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

namespace Halvern::Isolation {

namespace {

std::FILE* PrivateCopy(int descriptor, const char* mode)
{
    const int copy = fcntl(descriptor, F_DUPFD_CLOEXEC, 3);
    return copy < 0 ? nullptr : fdopen(copy, mode);
}

bool ReplaceByNothing(int descriptor)
{
    const int nothing = open("/dev/null", O_RDWR | O_CLOEXEC);
    const bool replaced = nothing >= 0 && dup2(nothing, descriptor) >= 0;
    if (nothing >= 0)
        close(nothing);
    return replaced;
}

} // namespace

QString EndingText(int code)
{
    const char* const name = strsignal(code);
    return QStringLiteral("signal %1, %2")
        .arg(code)
        .arg(QString::fromLocal8Bit(name ? name : "unknown"));
}

Streams TakeStreams()
{
    const Streams streams{PrivateCopy(STDIN_FILENO, "rb"), PrivateCopy(STDOUT_FILENO, "wb")};
    const bool taken = streams.requests && streams.answers && ReplaceByNothing(STDIN_FILENO) &&
                       dup2(STDERR_FILENO, STDOUT_FILENO) >= 0;
    return taken ? streams : Streams{};
}

void LimitMemory(long long bytes)
{
#ifndef CORSYNC_SANITIZED
    // Sanitizers take terabytes of addresses for themselves.
    if (bytes > 0) {
        const rlimit limit{rlim_t(bytes), rlim_t(bytes)};
        (void)setrlimit(RLIMIT_DATA, &limit);
    }
#else
    (void)bytes;
#endif
    // A crash is told in words; its memory would fill the disk.
    const rlimit none{0, 0};
    (void)setrlimit(RLIMIT_CORE, &none);
}

void IgnoreInterrupts()
{
    std::signal(SIGINT, SIG_IGN);
    std::signal(SIGPIPE, SIG_IGN);
}

} // namespace Halvern::Isolation
