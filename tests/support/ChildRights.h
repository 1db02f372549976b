// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QProcess>

namespace Halvern::Test {

/// File permissions hold for the process that is to be started, even when this one runs as root.
void GiveOrdinaryRights(QProcess& process);
/// The process cannot write a file beyond this size; the system breaks off the write, as on a full
/// disk. Only on POSIX, as the next one.
void LimitFileSize(QProcess& process, qint64 bytes);
/// The process has no standard output.
void CloseOutput(QProcess& process);

} // namespace Halvern::Test
