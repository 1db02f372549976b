#include "Platform.h"
#include "Run.h"

#include <QtCore/QCoreApplication>

#include <log4cplus/initializer.h>

int main(int argc, char* argv[])
{
    Halvern::Host::PrepareConsole();
    const QCoreApplication application(argc, argv);
    const log4cplus::Initializer logging;
    return Halvern::Host::Run(QCoreApplication::arguments());
}
