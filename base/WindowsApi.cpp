// SPDX-License-Identifier: Apache-2.0

#include "base/WindowsApi.h"

#include "base/WindowsApiPath.h"

#include <utility>

namespace Halvern::Base {

static_assert(sizeof(wchar_t) == sizeof(char16_t));

namespace {

// The headers have these for newer targets only.
constexpr auto DispositionInfoEx = static_cast<FILE_INFO_BY_HANDLE_CLASS>(21);
constexpr DWORD DeleteNow = 1;
constexpr DWORD PosixDelete = 2;
constexpr DWORD DeleteReadOnly = 0x10;

bool SetAttributes(HANDLE file, DWORD attributes)
{
    FILE_BASIC_INFO info = {};
    info.FileAttributes = attributes;
    return ::SetFileInformationByHandle(file, FileBasicInfo, &info, sizeof info);
}

} // namespace

std::wstring ToWide(std::u16string_view text)
{
    return {text.begin(), text.end()};
}

std::u16string_view FromWide(std::wstring_view text) noexcept
{
    return {reinterpret_cast<const char16_t*>(text.data()), text.size()};
}

std::wstring ApiPath(const std::filesystem::path& path)
{
    std::wstring full(::GetFullPathNameW(path.c_str(), 0, nullptr, nullptr), L'\0');
    full.resize(::GetFullPathNameW(path.c_str(), DWORD(full.size()), full.data(), nullptr));
    return full.empty() ? path.native() : ToWide(WindowsApiPath(FromWide(full)));
}

FileResult LastFailure(std::string what)
{
    const DWORD code = ::GetLastError();
    return FileResult::Failed(std::move(what), code, code == ERROR_SHARING_VIOLATION);
}

bool HasAttribute(const std::wstring& native, DWORD attribute) noexcept
{
    const DWORD attributes = ::GetFileAttributesW(native.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & attribute) != 0;
}

bool IsLink(HANDLE opened, DWORD byName) noexcept
{
    FILE_ATTRIBUTE_TAG_INFO info = {};
    ::GetFileInformationByHandleEx(opened, FileAttributeTagInfo, &info, sizeof info);
    const DWORD attributes = info.FileAttributes | (byName == INVALID_FILE_ATTRIBUTES ? 0 : byName);
    return (attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0 &&
           (info.ReparseTag == 0 || IsReparseTagNameSurrogate(info.ReparseTag));
}

bool DeleteOpened(HANDLE file)
{
    DWORD flags = DeleteNow | PosixDelete | DeleteReadOnly;
    if (::SetFileInformationByHandle(file, DispositionInfoEx, &flags, sizeof flags))
        return true;
    // The attribute belongs to all names of the file.
    BY_HANDLE_FILE_INFORMATION info = {};
    const bool isReadOnly = ::GetFileInformationByHandle(file, &info) &&
                            (info.dwFileAttributes & FILE_ATTRIBUTE_READONLY) != 0;
    if (isReadOnly)
        SetAttributes(file, info.dwFileAttributes & ~DWORD(FILE_ATTRIBUTE_READONLY));
    FILE_DISPOSITION_INFO disposition = {};
    disposition.DeleteFile = TRUE;
    const bool isDeleted =
        ::SetFileInformationByHandle(file, FileDispositionInfo, &disposition, sizeof disposition);
    const DWORD failure = ::GetLastError();
    if (isReadOnly)
        SetAttributes(file, info.dwFileAttributes);
    ::SetLastError(failure);
    return isDeleted;
}

OpenFile::OpenFile(const std::wstring& native, DWORD access, DWORD flags) noexcept
    : m_handle(::CreateFileW(native.c_str(), access,
                             FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                             OPEN_EXISTING, flags, nullptr))
{}

OpenFile::~OpenFile()
{
    if (*this)
        ::CloseHandle(m_handle);
}

} // namespace Halvern::Base
