// SPDX-License-Identifier: Apache-2.0

#include "kit/PlatformFile.h"

#include "pluginkit/FormatError.h"
#include "kit/WindowsPath.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>
#include <optional>
#include <string>
#include <vector>

#ifndef NOMINMAX // the compiler may define it
#define NOMINMAX
#endif
#define WIN32_LEAN_AND_MEAN
#include <windows.h>

namespace Halvern::PluginKit::Platform {

namespace {

/// In the user's language. The standard library's text would be in the code page of the system.
std::string MessageOf(DWORD code)
{
    std::array<wchar_t, 512> text{};
    DWORD size = ::FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS,
                                  nullptr, code, 0, text.data(), DWORD(text.size()), nullptr);
    while (size > 0 && (text[size - 1] == L'\r' || text[size - 1] == L'\n' ||
                        text[size - 1] == L' ' || text[size - 1] == L'.'))
        --size;
    const std::optional<std::string> message = ToUtf8(WideView(text.data(), size));
    return size > 0 && message ? *message : "error " + std::to_string(code);
}

[[noreturn]] void Fail(const char* what, DWORD code, bool isHeld)
{
    const std::string reason = std::string(what) + ": " + MessageOf(code);
    if (isHeld)
        throw HeldError(reason);
    throw FormatError(reason);
}

[[noreturn]] void Fail(const char* what)
{
    const DWORD code = ::GetLastError();
    Fail(what, code, code == ERROR_SHARING_VIOLATION);
}

HANDLE Native(Handle handle)
{
    return reinterpret_cast<HANDLE>(handle);
}

/// As functions of the system take it. The standard library's own do not take long paths, and take
/// a server for a folder of the current drive.
std::wstring Native(const std::filesystem::path& file)
{
    std::wstring full(::GetFullPathNameW(file.c_str(), 0, nullptr, nullptr), L'\0');
    full.resize(::GetFullPathNameW(file.c_str(), DWORD(full.size()), full.data(), nullptr));
    return full.empty() ? file.native() : WindowsApiPath(full);
}

/// Closes what it holds.
class OpenFile
{
public:
    OpenFile(const std::wstring& native, DWORD access, DWORD flags)
        : m_handle(::CreateFileW(native.c_str(), access,
                                 FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                 OPEN_EXISTING, flags, nullptr))
    {}
    ~OpenFile()
    {
        if (IsOpen())
            ::CloseHandle(m_handle);
    }
    OpenFile(const OpenFile&) = delete;
    OpenFile& operator=(const OpenFile&) = delete;

    bool IsOpen() const { return m_handle != INVALID_HANDLE_VALUE; }
    HANDLE Get() const { return m_handle; }

private:
    HANDLE m_handle;
};

std::optional<BY_HANDLE_FILE_INFORMATION> InformationOf(const std::filesystem::path& file)
{
    const OpenFile open(Native(file), FILE_READ_ATTRIBUTES, FILE_FLAG_BACKUP_SEMANTICS);
    BY_HANDLE_FILE_INFORMATION information = {};
    if (!open.IsOpen() || !::GetFileInformationByHandle(open.Get(), &information))
        return {};
    return information;
}

bool HasAttribute(const std::wstring& native, DWORD attribute)
{
    const DWORD attributes = ::GetFileAttributesW(native.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & attribute) != 0;
}

/// Puts a file in the place of another one that is being read. False where Windows or the file
/// system is too old for that, and when not all readers share deletion.
bool ReplaceWhileRead(const std::wstring& from, const std::wstring& to)
{
    // The headers have these for newer targets only.
    constexpr auto RenameInfoEx = static_cast<FILE_INFO_BY_HANDLE_CLASS>(22);
    constexpr DWORD ReplaceIfExists = 1;
    constexpr DWORD PosixSemantics = 2;
    const OpenFile file(from, DELETE | SYNCHRONIZE,
                        FILE_FLAG_WRITE_THROUGH | FILE_FLAG_OPEN_REPARSE_POINT);
    if (!file.IsOpen())
        return false;
    const DWORD flags = ReplaceIfExists | PosixSemantics;
    const auto size = static_cast<DWORD>(to.size() * sizeof(wchar_t));
    std::vector<char> info(sizeof(FILE_RENAME_INFO) + size);
    std::memcpy(info.data(), &flags, sizeof flags);
    std::memcpy(info.data() + offsetof(FILE_RENAME_INFO, FileNameLength), &size, sizeof size);
    std::memcpy(info.data() + offsetof(FILE_RENAME_INFO, FileName), to.data(), size);
    return ::SetFileInformationByHandle(file.Get(), RenameInfoEx, info.data(),
                                        static_cast<DWORD>(info.size()));
}

/// The names of a folder; the first is there at once.
class Listing
{
public:
    explicit Listing(const std::filesystem::path& folder)
        : m_handle(::FindFirstFileExW(Native(folder / L"*").c_str(), FindExInfoBasic, &m_data,
                                      FindExSearchNameMatch, nullptr, FIND_FIRST_EX_LARGE_FETCH)),
          m_hasName(m_handle != INVALID_HANDLE_VALUE)
    {}
    ~Listing()
    {
        if (m_handle != INVALID_HANDLE_VALUE)
            ::FindClose(m_handle);
    }
    Listing(const Listing&) = delete;
    Listing& operator=(const Listing&) = delete;

    bool HasName() const { return m_hasName; }
    const wchar_t* Name() const { return m_data.cFileName; }
    void Advance() { m_hasName = ::FindNextFileW(m_handle, &m_data); }

private:
    WIN32_FIND_DATAW m_data = {};
    HANDLE m_handle;
    bool m_hasName;
};

std::uint64_t Join(DWORD high, DWORD low)
{
    return (std::uint64_t(high) << 32) | low;
}

} // namespace

Handle OpenForReading(const std::filesystem::path& file)
{
    const HANDLE handle = ::CreateFileW(Native(file).c_str(), GENERIC_READ,
                                        FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                        nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (handle == INVALID_HANDLE_VALUE)
        Fail("the file cannot be opened");
    if (::GetFileType(handle) != FILE_TYPE_DISK) {
        ::CloseHandle(handle);
        throw FormatError("not a regular file");
    }
    return reinterpret_cast<Handle>(handle);
}

Handle CreateExclusively(const std::filesystem::path& file)
{
    const HANDLE handle = ::CreateFileW(Native(file).c_str(), GENERIC_WRITE, 0, nullptr, CREATE_NEW,
                                        FILE_ATTRIBUTE_NORMAL, nullptr);
    if (handle != INVALID_HANDLE_VALUE)
        return reinterpret_cast<Handle>(handle);
    if (::GetLastError() != ERROR_FILE_EXISTS)
        Fail("a temporary file cannot be made");
    return NoHandle;
}

FileStamp StampOf(Handle handle)
{
    BY_HANDLE_FILE_INFORMATION info = {};
    if (!::GetFileInformationByHandle(Native(handle), &info))
        Fail("the file's state cannot be read");
    FileStamp stamp;
    stamp.size = Join(info.nFileSizeHigh, info.nFileSizeLow);
    stamp.modified = static_cast<std::int64_t>(
        Join(info.ftLastWriteTime.dwHighDateTime, info.ftLastWriteTime.dwLowDateTime));
    stamp.volume = info.dwVolumeSerialNumber;
    stamp.id = Join(info.nFileIndexHigh, info.nFileIndexLow);
    return stamp;
}

std::size_t ReadSome(Handle handle, std::uint64_t offset, char* buffer, std::size_t size)
{
    OVERLAPPED at = {};
    at.Offset = static_cast<DWORD>(offset & 0xFFFFFFFFU);
    at.OffsetHigh = static_cast<DWORD>(offset >> 32);
    DWORD got = 0;
    const auto part = static_cast<DWORD>(std::min<std::size_t>(size, std::size_t(1) << 30));
    if (!::ReadFile(Native(handle), buffer, part, &got, &at) &&
        ::GetLastError() != ERROR_HANDLE_EOF)
        Fail("the file cannot be read");
    return got;
}

void WriteAll(Handle handle, std::string_view bytes)
{
    while (!bytes.empty()) {
        DWORD written = 0;
        const auto part =
            static_cast<DWORD>(std::min<std::size_t>(bytes.size(), std::size_t(1) << 30));
        if (!::WriteFile(Native(handle), bytes.data(), part, &written, nullptr))
            Fail("the temporary file cannot be written");
        bytes.remove_prefix(written);
    }
}

void FlushToDisk(Handle handle)
{
    if (!::FlushFileBuffers(Native(handle)))
        Fail("the temporary file cannot be flushed to the disk");
}

void Close(Handle handle) noexcept
{
    ::CloseHandle(Native(handle));
}

void CopyPermissions(const std::filesystem::path& file, const std::filesystem::path& copy, Handle)
{
    const DWORD attributes = ::GetFileAttributesW(Native(file).c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES)
        Fail("the file's attributes cannot be read");
    if (!::SetFileAttributesW(Native(copy).c_str(), attributes))
        Fail("the file's attributes cannot be kept");
}

void RenameOver(const std::filesystem::path& temporary, const std::filesystem::path& file)
{
    const std::wstring from = Native(temporary);
    const std::wstring to = Native(file);
    if (ReplaceWhileRead(from, to) ||
        ::MoveFileExW(from.c_str(), to.c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH))
        return;
    const DWORD code = ::GetLastError();
    // Access is denied, too, when somebody has the file open and shares everything.
    const bool isHeld = code == ERROR_SHARING_VIOLATION ||
                        (code == ERROR_ACCESS_DENIED && !HasAttribute(to, FILE_ATTRIBUTE_READONLY));
    Fail("the file cannot be replaced", code, isHeld);
}

void Remove(const std::filesystem::path& file) noexcept
{
    const std::wstring native = Native(file);
    ::SetFileAttributesW(native.c_str(), FILE_ATTRIBUTE_NORMAL);
    ::DeleteFileW(native.c_str());
}

bool Exists(const std::filesystem::path& file)
{
    return ::GetFileAttributesW(Native(file).c_str()) != INVALID_FILE_ATTRIBUTES;
}

bool IsFile(const std::filesystem::path& file)
{
    const DWORD attributes = ::GetFileAttributesW(Native(file).c_str());
    return attributes != INVALID_FILE_ATTRIBUTES &&
           (attributes & (FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_DEVICE)) == 0;
}

bool IsFolder(const std::filesystem::path& folder)
{
    return HasAttribute(Native(folder), FILE_ATTRIBUTE_DIRECTORY);
}

bool IsSameFile(const std::filesystem::path& a, const std::filesystem::path& b)
{
    const auto left = InformationOf(a);
    const auto right = InformationOf(b);
    return left && right && left->dwVolumeSerialNumber == right->dwVolumeSerialNumber &&
           left->nFileIndexHigh == right->nFileIndexHigh &&
           left->nFileIndexLow == right->nFileIndexLow;
}

std::filesystem::path Resolved(const std::filesystem::path& file)
{
    const std::wstring native = Native(file);
    if (!HasAttribute(native, FILE_ATTRIBUTE_REPARSE_POINT))
        return file;
    const OpenFile open(native, FILE_READ_ATTRIBUTES, FILE_FLAG_BACKUP_SEMANTICS);
    std::wstring resolved(32768, L'\0');
    const DWORD size = open.IsOpen() ? ::GetFinalPathNameByHandleW(open.Get(), resolved.data(),
                                                                   DWORD(resolved.size()), 0)
                                     : 0;
    resolved.resize(size < resolved.size() ? size : 0);
    return resolved.empty() ? file : std::filesystem::path(resolved);
}

void VisitNames(const std::filesystem::path& folder,
                const std::function<bool(const std::string& name)>& visit)
{
    for (Listing listing(folder); listing.HasName(); listing.Advance()) {
        const std::optional<std::string> name = NameOfEntry(listing.Name());
        if (name && !visit(*name))
            return;
    }
}

bool IsNetworkPath(const std::filesystem::path& path)
{
    return Formats::IsNetworkPath(path.native());
}

} // namespace Halvern::PluginKit::Platform
