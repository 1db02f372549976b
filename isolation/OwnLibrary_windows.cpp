// SPDX-License-Identifier: Apache-2.0

#include "isolation/OwnLibrary.h"

#include <array>

#include <windows.h>

namespace Halvern::Isolation {

namespace {

/// Any address of this library.
void Here() {}

} // namespace

QString OwnLibraryFile()
{
    HMODULE module = nullptr;
    if (!GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS |
                                GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                            reinterpret_cast<LPCWSTR>(&Here), &module))
        return {};
    std::array<wchar_t, 32768> name{};
    const DWORD size = GetModuleFileNameW(module, name.data(), DWORD(name.size()));
    return QString::fromWCharArray(name.data(), int(size)).replace(u'\\', u'/');
}

} // namespace Halvern::Isolation
