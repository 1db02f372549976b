// SPDX-License-Identifier: Apache-2.0

#include "base/HeldFile.h"

#include "base/WindowsApi.h"

namespace Halvern::Base {

FileResult HeldFile::Hold(const std::filesystem::path& file)
{
    const HANDLE opened =
        ::CreateFileW(ApiPath(file).c_str(), GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_ALWAYS,
                      FILE_ATTRIBUTE_NORMAL | FILE_FLAG_OPEN_REPARSE_POINT, nullptr);
    if (opened == INVALID_HANDLE_VALUE) {
        const DWORD code = ::GetLastError();
        return FileResult::Failed({}, code, code == ERROR_SHARING_VIOLATION);
    }
    BY_HANDLE_FILE_INFORMATION info = {};
    if (!::GetFileInformationByHandle(opened, &info) ||
        (info.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0) {
        ::CloseHandle(opened);
        return FileResult::Failed("not a regular file");
    }
    m_handle = reinterpret_cast<Handle>(opened);
    return {};
}

FileResult HeldFile::HoldFolder(const std::filesystem::path& folder)
{
    const HANDLE opened = ::CreateFileW(
        ApiPath(folder / L".corsync-lock").c_str(), GENERIC_READ | GENERIC_WRITE | DELETE, 0,
        nullptr, OPEN_ALWAYS,
        FILE_ATTRIBUTE_HIDDEN | FILE_FLAG_DELETE_ON_CLOSE | FILE_FLAG_OPEN_REPARSE_POINT, nullptr);
    if (opened == INVALID_HANDLE_VALUE) {
        const DWORD code = ::GetLastError();
        // Of one that is being deleted the system says that access is denied.
        return FileResult::Failed({}, code,
                                  code == ERROR_SHARING_VIOLATION || code == ERROR_ACCESS_DENIED);
    }
    m_handle = reinterpret_cast<Handle>(opened);
    return {};
}

void HeldFile::Release() noexcept
{
    if (IsHeld())
        Close(m_handle);
    m_handle = NoHandle;
}

} // namespace Halvern::Base
