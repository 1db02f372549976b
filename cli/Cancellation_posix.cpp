// SPDX-License-Identifier: Apache-2.0

#include "Cancellation.h"

#include "Descriptors.h"
#include "Streams.h"

#include <cerrno>
#include <csignal>
#include <ctime>
#include <string_view>

#include <poll.h>
#include <unistd.h>

namespace Halvern::Cli {

namespace {

Jobs::CancelToken token;
/// What a signal handler may use: no function may be called to find it out.
int messages = NoDescriptor;
bool isTerminal = false;

void Write(std::string_view text)
{
    // Who reads nothing must not keep the process from seeing the next signal.
    struct pollfd wanted = {messages, POLLOUT, 0};
    if (messages != NoDescriptor && ::poll(&wanted, 1, 0) == 1 && (wanted.revents & POLLOUT))
        static_cast<void>(!::write(messages, text.data(), text.size()));
}

void EndAtOnce(int signal)
{
    struct sigaction standard = {};
    standard.sa_handler = SIG_DFL;
    ::sigaction(signal, &standard, nullptr);
    // Delivered when the handler returns: who waits for the process learns what ended it.
    ::raise(signal);
}

/// A terminal that closes, and some programs that end others, send a signal twice, or two of them.
/// Nobody who wants a program to end at once is so quick.
volatile std::sig_atomic_t firstSignal = 0;
timespec firstTime = {};
constexpr long OneWish = 500;

bool IsTheSameWish(int signal)
{
    timespec now = {};
    if (signal == SIGINT || firstSignal == SIGINT ||
        ::clock_gettime(CLOCK_MONOTONIC, &now) != 0)
        return false;
    const long passed =
        (now.tv_sec - firstTime.tv_sec) * 1000 + (now.tv_nsec - firstTime.tv_nsec) / 1'000'000;
    return passed < OneWish;
}

void OnSignal(int signal)
{
    const int error = errno;
    if (token.IsCancelled()) {
        if (IsTheSameWish(signal)) {
            errno = error;
            return;
        }
        EndAtOnce(signal);
    } else {
        ::clock_gettime(CLOCK_MONOTONIC, &firstTime);
        firstSignal = signal;
        token.Cancel();
        if (isTerminal) // where the progress line may stand
            Write("\r\033[K");
        Write(signal == SIGINT
                  ? "corsync: Cancelling after the current step; press Ctrl-C again to "
                    "end at once\n"
                  : "corsync: Cancelling after the current step\n");
    }
    errno = error;
}

bool IsIgnored(int signal)
{
    struct sigaction present = {};
    return ::sigaction(signal, nullptr, &present) == 0 && present.sa_handler == SIG_IGN;
}

} // namespace

const Jobs::CancelToken& WatchForCancel()
{
    messages = MessagesDescriptor();
    isTerminal = IsStandardErrorTerminal();
    struct sigaction action = {};
    action.sa_handler = OnSignal;
    // Restarted, so that the copy under way does not fail with EINTR.
    action.sa_flags = SA_RESTART;
    sigemptyset(&action.sa_mask);
    sigaction(SIGINT, &action, nullptr);
    sigaction(SIGTERM, &action, nullptr);
    if (!IsIgnored(SIGHUP)) // as nohup wants it
        sigaction(SIGHUP, &action, nullptr);
    return token;
}

} // namespace Halvern::Cli
