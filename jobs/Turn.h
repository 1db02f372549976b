// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "base/HeldFile.h"

#include <QtCore/QtGlobal>

#include <filesystem>
#include <functional>

namespace Halvern::Jobs {

/// The turn of one import at a time, among all processes, to give files of a cloud folder their
/// names. Whoever holds it and stops is not waited for long: what has changed is seen at each file,
/// too, and the turn only spares those who come second a failure.
class Turn
{
public:
    /// What a job may wait in all.
    struct Patience
    {
        /// Milliseconds. A turn takes some microseconds for each file.
        qint64 left = 5000;
        bool isTold = false;
    };

    /// Waits for others while there is patience and `goesOn` says yes, and tells once, after a
    /// while, that it does. The system ends the turn of a process that ends.
    Turn(const std::filesystem::path& cloudFolder, Patience& patience,
         const std::function<void()>& waits, const std::function<bool()>& goesOn);
    bool IsTaken() const { return m_held.IsHeld(); }

private:
    Base::HeldFile m_held;
};

} // namespace Halvern::Jobs
