// SPDX-License-Identifier: Apache-2.0

#include "Descriptors.h"

#include <cerrno>
#include <csignal>
#include <cstring>
#include <ctime>

#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

namespace Halvern::Cli {

namespace {

constexpr int FirstPrivate = 3;
constexpr int UnknownWidth = 80;
constexpr int Forever = -1;

void OnBrokenPipe(int) {}

void OnAbort(int)
{
    const timespec moment = {0, 100'000'000};
    nanosleep(&moment, nullptr);
}

void HandleSignal(int signal, void (*handler)(int))
{
    struct sigaction action = {};
    action.sa_handler = handler;
    action.sa_flags = SA_RESTART;
    sigemptyset(&action.sa_mask);
    sigaction(signal, &action, nullptr);
}

void WaitUntilWritable(int descriptor)
{
    pollfd waited = {descriptor, POLLOUT, 0};
    (void)poll(&waited, 1, Forever);
}

} // namespace

bool IsOpen(int descriptor)
{
    return fcntl(descriptor, F_GETFD) >= 0 || errno != EBADF;
}

void OpenMissingDescriptors()
{
    // A new descriptor gets the lowest number that is free.
    int opened = 0;
    do {
        opened = open("/dev/null", O_RDWR);
    } while (opened >= 0 && opened < FirstPrivate);
    if (opened >= FirstPrivate)
        close(opened);
}

void SurviveBrokenPipes()
{
    // A handler, because programs that are started inherit what is ignored.
    HandleSignal(SIGPIPE, OnBrokenPipe);
}

void DelayAborts()
{
    HandleSignal(SIGABRT, OnAbort);
}

int DuplicateOf(int descriptor)
{
    return fcntl(descriptor, F_DUPFD_CLOEXEC, FirstPrivate);
}

void Redirect(int standard, int to)
{
    while (dup2(to, standard) < 0 && errno == EINTR)
        continue;
}

void RedirectToNothing(int standard)
{
    const int nothing = open("/dev/null", O_RDWR | O_CLOEXEC);
    if (nothing < 0)
        return;
    Redirect(standard, nothing);
    close(nothing);
}

void Close(int descriptor)
{
    close(descriptor);
}

QString WriteAll(int descriptor, const QByteArray& bytes)
{
    qsizetype done = 0;
    while (done < bytes.size()) {
        const ssize_t written =
            write(descriptor, bytes.constData() + done, size_t(bytes.size() - done));
        if (written >= 0)
            done += written;
        else if (errno == EAGAIN || errno == EWOULDBLOCK)
            WaitUntilWritable(descriptor);
        else if (errno != EINTR)
            return QString::fromLocal8Bit(std::strerror(errno));
    }
    return {};
}

bool IsTerminal(int descriptor)
{
    return isatty(descriptor) == 1;
}

int WidthOfTerminal(int descriptor)
{
    winsize size = {};
    const bool known = ioctl(descriptor, TIOCGWINSZ, &size) == 0 && size.ws_col > 0;
    return known ? size.ws_col : UnknownWidth;
}

Pipe MakePipe()
{
    int ends[2] = {NoDescriptor, NoDescriptor};
    if (pipe(ends) != 0)
        return {};
    for (const int end : ends)
        fcntl(end, F_SETFD, FD_CLOEXEC);
    return {ends[0], ends[1]};
}

bool WaitForInput(int descriptor, int milliseconds)
{
    pollfd waited = {descriptor, POLLIN, 0};
    return poll(&waited, 1, milliseconds) > 0;
}

QByteArray ReadSome(int descriptor)
{
    char buffer[4096];
    ssize_t count = 0;
    do {
        count = read(descriptor, buffer, sizeof buffer);
    } while (count < 0 && errno == EINTR);
    return count > 0 ? QByteArray(buffer, qsizetype(count)) : QByteArray();
}

} // namespace Halvern::Cli
