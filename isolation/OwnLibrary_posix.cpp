// SPDX-License-Identifier: Apache-2.0

#include "isolation/OwnLibrary.h"

#include <dlfcn.h>

namespace Halvern::Isolation {

namespace {

/// Any address of this library.
void Here() {}

} // namespace

QString OwnLibraryFile()
{
    Dl_info info{};
    return dladdr(reinterpret_cast<void*>(&Here), &info) == 0
               ? QString()
               : QString::fromLocal8Bit(info.dli_fname);
}

} // namespace Halvern::Isolation
