// SPDX-License-Identifier: Apache-2.0

#include "ProcessStart.h"

#include <gtest/gtest.h>

#include <iostream>

namespace Halvern::Test {

namespace {

constexpr int patience = 60'000;

// Of some thousand processes Wine loses one before a line of its program has run; so says the
// system's own error for it, which Windows gives for nothing that a program does.
bool IsLostByWine(const QProcess& process)
{
    return process.error() == QProcess::FailedToStart &&
           process.errorString().contains(QStringLiteral("Internal error"));
}

} // namespace

void StartProcess(QProcess& process)
{
    constexpr int mostTries = 3;
    for (int tries = 1;; ++tries) {
        process.start();
        if (process.waitForStarted(patience))
            return;
        if (tries < mostTries && IsLostByWine(process)) {
            std::cerr << "Wine lost a process; it is started again\n";
            continue;
        }
        ADD_FAILURE() << process.program().toStdString()
                      << " does not start: " << process.errorString().toStdString();
        return;
    }
}

void StartProcess(QProcess& process, const QString& program, const QStringList& arguments)
{
    process.setProgram(program);
    process.setArguments(arguments);
    StartProcess(process);
}

} // namespace Halvern::Test
