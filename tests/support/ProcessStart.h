// SPDX-License-Identifier: Apache-2.0
#pragma once

#include <QtCore/QProcess>
#include <QtCore/QString>
#include <QtCore/QStringList>

namespace Halvern::Test {

/// Starts the process that is set up, and returns once it runs. One that cannot be started is a
/// failure of the test.
void StartProcess(QProcess& process);
void StartProcess(QProcess& process, const QString& program, const QStringList& arguments);

} // namespace Halvern::Test
