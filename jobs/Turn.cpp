// SPDX-License-Identifier: Apache-2.0

#include "Turn.h"

#include <QtCore/QElapsedTimer>

#include <chrono>
#include <thread>

namespace Halvern::Jobs {

namespace {

/// Milliseconds. A turn takes some microseconds for each file.
constexpr qint64 LongestWait = 5000;
constexpr qint64 SilentWait = 500;

} // namespace

Turn::Turn(const std::filesystem::path& cloudFolder, const std::function<void()>& waits)
{
    QElapsedTimer waited;
    waited.start();
    for (bool isTold = false; m_held.HoldFolder(cloudFolder).IsHeld();) {
        if (waited.elapsed() > LongestWait)
            return;
        if (!isTold && waited.elapsed() > SilentWait) {
            waits();
            isTold = true;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
}

} // namespace Halvern::Jobs
