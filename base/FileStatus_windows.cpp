// SPDX-License-Identifier: Apache-2.0

#include "base/FileStatus.h"

#include "base/WindowsApi.h"

#include <algorithm>
#include <limits>

namespace Halvern::Base {

namespace {

/// Windows counts in steps of 100 ns from the year 1601.
std::int64_t NanosecondsSince1970(const FILETIME& time)
{
    constexpr std::int64_t from1601To1970 = 116'444'736'000'000'000;
    constexpr std::int64_t limit = std::numeric_limits<std::int64_t>::max() / 100;
    const auto steps =
        static_cast<std::int64_t>(JoinWords(time.dwHighDateTime, time.dwLowDateTime));
    return std::clamp(steps - from1601To1970, -limit, limit) * 100;
}

FileKind KindOf(DWORD attributes)
{
    if (attributes & FILE_ATTRIBUTE_DIRECTORY)
        return FileKind::Folder;
    return attributes & FILE_ATTRIBUTE_DEVICE ? FileKind::Other : FileKind::File;
}

} // namespace

FileStatus ReadFileStatus(const std::filesystem::path& path)
{
    const OpenFile file(ApiPath(path), FILE_READ_ATTRIBUTES, FILE_FLAG_BACKUP_SEMANTICS);
    return file ? ReadFileStatus(reinterpret_cast<Handle>(file.Get())) : FileStatus();
}

FileStatus ReadFileStatus(Handle handle)
{
    BY_HANDLE_FILE_INFORMATION info = {};
    if (!::GetFileInformationByHandle(reinterpret_cast<HANDLE>(handle), &info))
        return {};
    FileStatus status;
    status.kind = KindOf(info.dwFileAttributes);
    status.size = JoinWords(info.nFileSizeHigh, info.nFileSizeLow);
    status.modified = NanosecondsSince1970(info.ftLastWriteTime);
    status.device = info.dwVolumeSerialNumber;
    status.index = JoinWords(info.nFileIndexHigh, info.nFileIndexLow);
    status.names = info.nNumberOfLinks;
    return status;
}

FileStatus ReadLinkStatus(const std::filesystem::path& path)
{
    const std::wstring native = ApiPath(path);
    const OpenFile file(native, FILE_READ_ATTRIBUTES,
                        FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_OPEN_REPARSE_POINT);
    if (!file)
        return {};
    FileStatus status = ReadFileStatus(reinterpret_cast<Handle>(file.Get()));
    if (IsLink(file.Get(), ::GetFileAttributesW(native.c_str())))
        status.kind = FileKind::Link;
    return status;
}

bool Exists(const std::filesystem::path& path)
{
    return ::GetFileAttributesW(ApiPath(path).c_str()) != INVALID_FILE_ATTRIBUTES;
}

bool IsFile(const std::filesystem::path& path)
{
    const DWORD attributes = ::GetFileAttributesW(ApiPath(path).c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && KindOf(attributes) == FileKind::File;
}

bool IsFolder(const std::filesystem::path& path)
{
    return HasAttribute(ApiPath(path), FILE_ATTRIBUTE_DIRECTORY);
}

std::filesystem::path Resolved(const std::filesystem::path& path)
{
    const std::wstring native = ApiPath(path);
    if (!HasAttribute(native, FILE_ATTRIBUTE_REPARSE_POINT))
        return path;
    const OpenFile file(native, FILE_READ_ATTRIBUTES, FILE_FLAG_BACKUP_SEMANTICS);
    std::wstring resolved(32768, L'\0');
    const DWORD size =
        file ? ::GetFinalPathNameByHandleW(file.Get(), resolved.data(), DWORD(resolved.size()), 0)
             : 0;
    resolved.resize(size < resolved.size() ? size : 0);
    return resolved.empty() ? path : std::filesystem::path(resolved);
}

} // namespace Halvern::Base
