// SPDX-License-Identifier: Apache-2.0

// What the Windows sources of this folder share. For them alone.

#pragma once

#include "base/FileResult.h"

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>

#ifndef NOMINMAX // the compiler may define it
#define NOMINMAX
#endif
#define WIN32_LEAN_AND_MEAN
#include <windows.h>

namespace Halvern::Base {

std::wstring ToWide(std::u16string_view text);
/// The same units; the text must outlive the view.
std::u16string_view FromWide(std::wstring_view text) noexcept;

/// As functions of the system take a path, made absolute. The standard library's own functions do
/// not take long paths, and take a server for a folder of the current drive.
std::wstring ApiPath(const std::filesystem::path& path);

/// The failure of the system's last call.
FileResult LastFailure(std::string what = {});

bool HasAttribute(const std::wstring& native, DWORD attribute) noexcept;

/// Whether what is open, opened as itself, is a symbolic link or a junction, and not the
/// placeholder of a file that a cloud has. `byName` are the attributes that the name has: Wine
/// opens what a link leads to, however it is asked, and tells a link by its name alone.
bool IsLink(HANDLE opened, DWORD byName) noexcept;

/// Deletes what is open (DELETE and FILE_WRITE_ATTRIBUTES), even if it is read-only; its other
/// names stay as they are.
bool DeleteOpened(HANDLE file);

constexpr std::uint64_t JoinWords(DWORD high, DWORD low) noexcept
{
    return (std::uint64_t(high) << 32) | low;
}

// Scanners and indexers open what was just written, and let it go again within moments.
inline constexpr ULONGLONG PatienceMs = 2000;
inline constexpr DWORD PauseMs = 25;

/// Calls `operation` again for a while as long as it fails because another program has the file.
/// The last failure is the system's last error.
template <typename Operation>
bool WithPatience(Operation operation)
{
    const ULONGLONG end = ::GetTickCount64() + PatienceMs;
    for (;;) {
        if (operation())
            return true;
        const DWORD failure = ::GetLastError();
        if ((failure != ERROR_SHARING_VIOLATION && failure != ERROR_ACCESS_DENIED) ||
            ::GetTickCount64() >= end) {
            ::SetLastError(failure);
            return false;
        }
        ::Sleep(PauseMs);
    }
}

/// An existing file or folder, open while this lives; shared with everybody.
class OpenFile
{
public:
    OpenFile(const std::wstring& native, DWORD access,
             DWORD flags = FILE_ATTRIBUTE_NORMAL) noexcept;
    ~OpenFile();
    OpenFile(const OpenFile&) = delete;
    OpenFile& operator=(const OpenFile&) = delete;

    explicit operator bool() const noexcept { return m_handle != INVALID_HANDLE_VALUE; }
    HANDLE Get() const noexcept { return m_handle; }

private:
    HANDLE m_handle;
};

} // namespace Halvern::Base
