#include "PlatformFile.h"

#include "FormatError.h"
#include "Utf.h"

#include <algorithm>
#include <array>
#include <string>
#include <system_error>

#ifndef NOMINMAX // the compiler may define it
#define NOMINMAX
#endif
#define WIN32_LEAN_AND_MEAN
#include <windows.h>

namespace Halvern::Formats::Platform {

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

[[noreturn]] void Fail(const char* what)
{
    const DWORD code = ::GetLastError();
    throw FormatError(std::string(what) + ": " + MessageOf(code));
}

HANDLE Native(Handle handle)
{
    return reinterpret_cast<HANDLE>(handle);
}

/// As functions of the system take it: from a length on they need a prefix.
std::wstring Native(const std::filesystem::path& file)
{
    std::error_code error;
    std::wstring native = std::filesystem::absolute(file, error).make_preferred().wstring();
    if (error || native.size() < 248 || native.starts_with(L"\\\\?\\"))
        return error ? file.wstring() : native;
    return native.starts_with(L"\\\\") ? L"\\\\?\\UNC" + native.substr(1) : L"\\\\?\\" + native;
}

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
    if (!::MoveFileExW(Native(temporary).c_str(), Native(file).c_str(),
                       MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH))
        Fail("the file cannot be replaced");
}

} // namespace Halvern::Formats::Platform
