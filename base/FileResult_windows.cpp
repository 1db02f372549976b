// SPDX-License-Identifier: Apache-2.0

#include "base/FileResult.h"

#include "base/Utf.h"
#include "base/WindowsApi.h"

#include <array>

namespace Halvern::Base {

// In the user's language. The standard library's text would be in the code page of the system.
std::string SystemErrorText(std::uint32_t code)
{
    std::array<wchar_t, 512> text{};
    DWORD size = ::FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS,
                                  nullptr, code, 0, text.data(), DWORD(text.size()), nullptr);
    while (size > 0 &&
           (text[size - 1] == L'\r' || text[size - 1] == L'\n' || text[size - 1] == L' '))
        --size;
    return size > 0 ? ToUtf8Lossy(FromWide({text.data(), size})) : "error " + std::to_string(code);
}

} // namespace Halvern::Base
