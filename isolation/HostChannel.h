// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "isolation/Messages.h"
#include "isolation/Platform.h"

#include <QtCore/QByteArray>

#include <condition_variable>
#include <deque>
#include <mutex>
#include <thread>

namespace Halvern::Isolation {

/// The host's end. A thread of its own reads: when nobody is there any more to ask, the process
/// ends, also out of a plug-in's endless loop.
class HostChannel
{
public:
    explicit HostChannel(const Streams& streams);
    HostChannel(const HostChannel&) = delete;
    HostChannel& operator=(const HostChannel&) = delete;

    /// Waits for the next message.
    MessageReader Receive();
    /// Ends the process when nobody reads it any more.
    void Send(const QByteArray& message);

private:
    void Read();

    Streams m_streams;
    std::mutex m_mutex;
    std::condition_variable m_arrived;
    std::deque<QByteArray> m_messages;
    std::thread m_reader;
};

} // namespace Halvern::Isolation
