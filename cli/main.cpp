// SPDX-License-Identifier: Apache-2.0

#include "Platform.h"
#include "Run.h"
#include "Streams.h"

#include <QtCore/QCoreApplication>

#include <log4cplus/initializer.h>

int main(int argc, char* argv[])
{
    Halvern::Cli::PrepareConsole();
    Halvern::Cli::TakeStreams();
    const QCoreApplication application(argc, argv);
    const log4cplus::Initializer logging;
    return Halvern::Cli::Run(QCoreApplication::arguments());
}
