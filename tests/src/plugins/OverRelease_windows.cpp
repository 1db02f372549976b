// SPDX-License-Identifier: Apache-2.0

#include "OverRelease.h"

#include <windows.h>

namespace Halvern::Test {

void OverRelease(const QString& library)
{
    FreeLibrary(GetModuleHandleW(library.toStdWString().c_str()));
}

} // namespace Halvern::Test
