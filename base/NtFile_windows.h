// SPDX-License-Identifier: Apache-2.0

// Files by their names in an open folder, which only the calls below those of Windows' usual ones
// can do. For the Windows sources of this folder alone.

#pragma once

#include "base/FileResult.h"
#include "base/FileStatus.h"
#include "base/WindowsApi.h"

#include <string>
#include <utility>

namespace Halvern::Base {

/// An open file or folder.
class NtFile
{
public:
    NtFile() noexcept = default;
    explicit NtFile(HANDLE handle) noexcept : m_handle(handle) {}
    ~NtFile()
    {
        if (*this)
            ::CloseHandle(m_handle);
    }
    NtFile(NtFile&& other) noexcept : m_handle(other.Release()) {}
    NtFile& operator=(NtFile&& other) noexcept
    {
        std::swap(m_handle, other.m_handle);
        return *this;
    }
    NtFile(const NtFile&) = delete;
    NtFile& operator=(const NtFile&) = delete;

    explicit operator bool() const noexcept { return m_handle != INVALID_HANDLE_VALUE; }
    HANDLE Get() const noexcept { return m_handle; }
    HANDLE Release() noexcept { return std::exchange(m_handle, INVALID_HANDLE_VALUE); }

private:
    HANDLE m_handle = INVALID_HANDLE_VALUE;
};

inline constexpr DWORD SharedByAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
/// While it is open nobody gives the file another name.
inline constexpr DWORD KeptInPlace = FILE_SHARE_READ | FILE_SHARE_WRITE;

/// Opens a name in an open folder; a link itself, not what it leads to. Fails with the system's
/// last error.
bool OpenIn(HANDLE folder, const std::wstring& name, DWORD access, DWORD share, NtFile& opened);
/// What a link or the placeholder of a cloud stands for.
bool OpenThrough(HANDLE folder, const std::wstring& name, DWORD access, DWORD share,
                 NtFile& opened);
/// Makes a folder. Fails when the name is taken.
bool MakeFolderIn(HANDLE folder, const std::wstring& name, DWORD attributes);
/// An open folder once more, to read its names from the first on.
bool OpenAgain(HANDLE folder, NtFile& opened);

/// Whether a name in an open folder, opened by OpenIn, is a link: a symbolic link or a junction,
/// but not the placeholder of a file that a cloud has.
bool IsLink(HANDLE folder, const std::wstring& name, HANDLE opened);
/// Of an entry that OpenIn opened.
FileStatus EntryStatus(HANDLE folder, const std::wstring& name, HANDLE opened);

/// Gives an open file (DELETE) a name in an open folder.
bool RenameInto(HANDLE file, HANDLE folder, const std::wstring& name, bool replace);

} // namespace Halvern::Base
