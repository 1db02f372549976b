// SPDX-License-Identifier: Apache-2.0

#include "base/FileResult.h"

#include "base/Utf.h"
#include "base/WindowsApi.h"

#include <array>

namespace Halvern::Base {

namespace {

// The headers do not have it.
constexpr std::uint32_t DiskQuotaExceeded = 1295;

} // namespace

FileProblem ProblemOf(std::uint32_t code) noexcept
{
    switch (code) {
    case ERROR_FILE_NOT_FOUND:
    case ERROR_PATH_NOT_FOUND:
        return FileProblem::Missing;
    case ERROR_FILE_EXISTS:
    case ERROR_ALREADY_EXISTS:
        return FileProblem::NameTaken;
    case ERROR_DIRECTORY:
        return FileProblem::NotAFolder;
    case ERROR_DIR_NOT_EMPTY:
        return FileProblem::NotEmpty;
    case ERROR_DISK_FULL:
    case ERROR_HANDLE_DISK_FULL:
    case DiskQuotaExceeded:
        return FileProblem::NoSpace;
    case ERROR_NOT_SAME_DEVICE:
        return FileProblem::OtherDisk;
    case ERROR_INVALID_NAME:
    case ERROR_FILENAME_EXCED_RANGE:
        return FileProblem::NameRefused;
    case ERROR_SHARING_VIOLATION:
        return FileProblem::Held;
    default:
        return FileProblem::Other;
    }
}

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
