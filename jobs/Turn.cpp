// SPDX-License-Identifier: Apache-2.0

#include "Turn.h"

#include <QtCore/QElapsedTimer>

#include <algorithm>
#include <chrono>
#include <thread>

namespace Halvern::Jobs {

namespace {

/// Milliseconds.
constexpr qint64 SilentWait = 500;

} // namespace

Turn::Turn(const std::filesystem::path& cloudFolder, Patience& patience,
           const std::function<void()>& waits, const std::function<bool()>& goesOn)
{
    QElapsedTimer waited;
    waited.start();
    while (m_held.HoldFolder(cloudFolder).IsHeld()) {
        if (waited.elapsed() > patience.left || !goesOn())
            break;
        if (!patience.isTold && waited.elapsed() > SilentWait) {
            waits();
            patience.isTold = true;
        }
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
    patience.left -= std::min(patience.left, waited.elapsed());
}

} // namespace Halvern::Jobs
