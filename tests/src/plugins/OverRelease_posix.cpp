// SPDX-License-Identifier: Apache-2.0

#include "OverRelease.h"

#include <dlfcn.h>

namespace Halvern::Test {

void OverRelease(const QString& library)
{
    void* handle = dlopen(library.toLocal8Bit().constData(), RTLD_LAZY | RTLD_NOLOAD);
    if (handle) {
        dlclose(handle);
        dlclose(handle);
    }
}

} // namespace Halvern::Test
