// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "Descriptors.h"

#include <atomic>
#include <thread>

namespace Halvern::Cli {

/// What others print in this process: plug-ins, libraries, programs that these start. As long as
/// it lives none of it gets between the results: descriptors 1 and 2 lead to where messages go, at
/// a terminal through a thread that makes control characters visible.
///
/// Only there: a crash would take along what the thread has not written yet, and scripts and
/// developers who collect the output want that most. A program that is started and goes on after
/// the end finds its output closed.
class ForeignOutput
{
public:
    /// `messages` stays open for as long as the object lives; NoDescriptor: nobody wants them.
    explicit ForeignOutput(int messages);
    /// What was printed until then is written. What comes later goes to the messages as it is.
    ~ForeignOutput();
    ForeignOutput(const ForeignOutput&) = delete;
    ForeignOutput& operator=(const ForeignOutput&) = delete;

private:
    bool BeginMasking();
    void RedirectTo(int descriptor);
    void Forward() noexcept;

    int m_messages;
    int m_readEnd = NoDescriptor;
    std::atomic<bool> m_ending{false};
    std::thread m_forwarder;
};

} // namespace Halvern::Cli
