// SPDX-License-Identifier: Apache-2.0

#include "Platform.h"

#include <clocale>
#include <cstdlib>
#include <cstring>

#include <langinfo.h>

namespace Halvern::Cli {

void PrepareConsole()
{
    std::setlocale(LC_ALL, "");
    // Qt switches to UTF-8 by itself, but warns about it on standard error.
    if (std::strcmp(nl_langinfo(CODESET), "UTF-8") != 0)
        setenv("LC_ALL", "C.UTF-8", 1);
}

void RestoreConsole() {}

QStringList ExpandPatterns(const QStringList& arguments)
{
    return arguments;
}

} // namespace Halvern::Cli
