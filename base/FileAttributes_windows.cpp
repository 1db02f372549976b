// SPDX-License-Identifier: Apache-2.0

#include "base/FileAttributes.h"

#include "base/WindowsApi.h"

namespace Halvern::Base {

namespace {

void SetReadOnly(const std::filesystem::path& path, bool readOnly)
{
    const std::wstring native = ApiPath(path);
    const DWORD attributes = ::GetFileAttributesW(native.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES)
        return;
    const DWORD others = attributes & ~DWORD(FILE_ATTRIBUTE_READONLY);
    ::SetFileAttributesW(native.c_str(), readOnly ? others | FILE_ATTRIBUTE_READONLY : others);
}

} // namespace

bool IsWritable(const std::filesystem::path& path)
{
    const DWORD attributes = ::GetFileAttributesW(ApiPath(path).c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && !(attributes & FILE_ATTRIBUTE_READONLY);
}

bool MayAddTo(const std::filesystem::path& folder)
{
    // Only a folder can be opened for that right, and the system asks its access list.
    const DWORD attributes = ::GetFileAttributesW(ApiPath(folder).c_str());
    const OpenFile opened(ApiPath(folder), FILE_ADD_FILE, FILE_FLAG_BACKUP_SEMANTICS);
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0 &&
           bool(opened);
}

WriteRights AllowWriting(const std::filesystem::path& path)
{
    const WriteRights before{IsWritable(path) ? 1U : 0U};
    SetReadOnly(path, false);
    return before;
}

void RestoreWriting(const std::filesystem::path& path, WriteRights rights)
{
    SetReadOnly(path, rights.bits == 0);
}

} // namespace Halvern::Base
