// SPDX-License-Identifier: Apache-2.0

#include "isolation/HostChannel.h"

#include <cstdio>
#include <cstdlib>

namespace Halvern::Isolation {

namespace {

/// Without the destructors of a plug-in that is perhaps in the middle of a call.
[[noreturn]] void EndProcess()
{
    std::_Exit(EXIT_SUCCESS);
}

} // namespace

HostChannel::HostChannel(const Streams& streams)
    : m_streams(streams), m_reader(&HostChannel::Read, this)
{
    m_reader.detach();
}

MessageReader HostChannel::Receive()
{
    std::unique_lock lock(m_mutex);
    m_arrived.wait(lock, [&] { return !m_messages.empty(); });
    const QByteArray message = m_messages.front();
    m_messages.pop_front();
    return MessageReader(message);
}

void HostChannel::Send(const QByteArray& message)
{
    const auto size = std::size_t(message.size());
    if (std::fwrite(message.constData(), 1, size, m_streams.answers) != size ||
        std::fflush(m_streams.answers) != 0)
        EndProcess();
}

void HostChannel::Read()
{
    while (true) {
        char length[LengthSize];
        if (std::fread(length, 1, LengthSize, m_streams.requests) != LengthSize)
            EndProcess();
        QByteArray message(qsizetype(LengthOf(length)), Qt::Uninitialized);
        if (std::fread(message.data(), 1, std::size_t(message.size()), m_streams.requests) !=
            std::size_t(message.size()))
            EndProcess();
        const std::lock_guard lock(m_mutex);
        m_messages.push_back(message);
        m_arrived.notify_one();
    }
}

} // namespace Halvern::Isolation
