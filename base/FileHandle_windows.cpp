// SPDX-License-Identifier: Apache-2.0

#include "base/FileHandle.h"

#include "base/WindowsApi.h"

#include <algorithm>

namespace Halvern::Base {

namespace {

HANDLE Native(Handle handle)
{
    return reinterpret_cast<HANDLE>(handle);
}

/// A cloud placeholder is a reparse point, too, but no link.
bool IsSymbolicLink(const std::wstring& native)
{
    WIN32_FIND_DATAW data = {};
    if (!HasAttribute(native, FILE_ATTRIBUTE_REPARSE_POINT))
        return false;
    const HANDLE search = ::FindFirstFileW(native.c_str(), &data);
    if (search == INVALID_HANDLE_VALUE)
        return false;
    ::FindClose(search);
    return data.dwReserved0 == IO_REPARSE_TAG_SYMLINK;
}

DWORD Part(std::size_t size)
{
    return static_cast<DWORD>(std::min<std::size_t>(size, std::size_t(1) << 30));
}

} // namespace

FileResult OpenForReading(const std::filesystem::path& file, Handle& handle, Links links)
{
    const std::wstring native = ApiPath(file);
    if (links == Links::Refuse && IsSymbolicLink(native))
        return FileResult::Failed("not a regular file");
    const HANDLE opened = ::CreateFileW(native.c_str(), GENERIC_READ,
                                        FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                        nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (opened == INVALID_HANDLE_VALUE)
        return LastFailure();
    if (::GetFileType(opened) != FILE_TYPE_DISK) {
        ::CloseHandle(opened);
        return FileResult::Failed("not a regular file");
    }
    handle = reinterpret_cast<Handle>(opened);
    return {};
}

FileResult CreateExclusively(const std::filesystem::path& file, Handle& handle)
{
    const HANDLE made = ::CreateFileW(ApiPath(file).c_str(), GENERIC_READ | GENERIC_WRITE, 0,
                                      nullptr, CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (made == INVALID_HANDLE_VALUE && ::GetLastError() != ERROR_FILE_EXISTS)
        return LastFailure();
    handle = made == INVALID_HANDLE_VALUE ? NoHandle : reinterpret_cast<Handle>(made);
    return {};
}

FileResult ReadSome(Handle handle, std::uint64_t offset, char* buffer, std::size_t size,
                    std::size_t& got)
{
    OVERLAPPED at = {};
    at.Offset = static_cast<DWORD>(offset & 0xFFFFFFFFU);
    at.OffsetHigh = static_cast<DWORD>(offset >> 32);
    DWORD count = 0;
    if (!::ReadFile(Native(handle), buffer, Part(size), &count, &at) &&
        ::GetLastError() != ERROR_HANDLE_EOF)
        return LastFailure();
    got = count;
    return {};
}

FileResult WriteAll(Handle handle, std::string_view bytes)
{
    while (!bytes.empty()) {
        DWORD written = 0;
        if (!::WriteFile(Native(handle), bytes.data(), Part(bytes.size()), &written, nullptr))
            return LastFailure();
        bytes.remove_prefix(written);
    }
    return {};
}

FileResult WriteAllAt(Handle handle, std::uint64_t offset, std::string_view bytes)
{
    while (!bytes.empty()) {
        OVERLAPPED at = {};
        at.Offset = static_cast<DWORD>(offset & 0xFFFFFFFFU);
        at.OffsetHigh = static_cast<DWORD>(offset >> 32);
        DWORD written = 0;
        if (!::WriteFile(Native(handle), bytes.data(), Part(bytes.size()), &written, &at))
            return LastFailure();
        bytes.remove_prefix(written);
        offset += written;
    }
    return {};
}

FileResult Lengthen(Handle handle, std::uint64_t size)
{
    LARGE_INTEGER end = {};
    end.QuadPart = static_cast<LONGLONG>(size);
    return ::SetFilePointerEx(Native(handle), end, nullptr, FILE_BEGIN) &&
                   ::SetEndOfFile(Native(handle))
               ? FileResult()
               : LastFailure();
}

FileResult FlushToDisk(Handle handle)
{
    return ::FlushFileBuffers(Native(handle)) ? FileResult() : LastFailure();
}

void Close(Handle handle) noexcept
{
    ::CloseHandle(Native(handle));
}

FileResult CopyPermissions(const std::filesystem::path& file, const std::filesystem::path& copy,
                           Handle)
{
    const DWORD attributes = ::GetFileAttributesW(ApiPath(file).c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES)
        return LastFailure("the file's attributes cannot be read");
    if (!::SetFileAttributesW(ApiPath(copy).c_str(), attributes))
        return LastFailure("the file's attributes cannot be kept");
    return {};
}

} // namespace Halvern::Base
