// SPDX-License-Identifier: Apache-2.0

#include "base/FileLock.h"

#include "base/FileAttributes.h"
#include "base/NativePath.h"
#include "base/WindowsApi.h"
#include "base/WindowsApiPath.h"

#include <sys/stat.h>
#include <sys/types.h>
#include <sys/utime.h>

namespace Halvern::Base {

namespace {

bool CanBeAppendedTo(const std::wstring& native)
{
    const HANDLE handle =
        ::CreateFileW(native.c_str(), GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr,
                      OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (handle == INVALID_HANDLE_VALUE)
        return false;
    ::CloseHandle(handle);
    return true;
}

/// Writes a file's times back as they were. The runtime's function knows whole seconds only.
void RestoreTimes(const std::wstring& native, const WIN32_FILE_ATTRIBUTE_DATA& before)
{
    const OpenFile file(native, FILE_WRITE_ATTRIBUTES);
    if (file)
        ::SetFileTime(file.Get(), nullptr, &before.ftLastAccessTime, &before.ftLastWriteTime);
}

} // namespace

bool IsFileLocked(const std::filesystem::path& path)
{
    if (!IsWritable(path))
        return false;
    const std::wstring native = ApiPath(path);
    WIN32_FILE_ATTRIBUTE_DATA before;
    if (!::GetFileAttributesExW(native.c_str(), GetFileExInfoStandard, &before))
        return false;
    struct _stat64i32 status = {};
    const bool isForRuntime = RuntimeTakesPath(FromWide(native));
    if (isForRuntime && ::_wstat64i32(native.c_str(), &status) != 0)
        return false;
    const DWORD attributes = ::GetFileAttributesW(native.c_str());
    if (attributes == INVALID_FILE_ATTRIBUTES)
        return false;
    if (!CanBeAppendedTo(native))
        return true;
    if (isForRuntime) {
        // The runtime takes the bytes in the ANSI code page, so that this misses paths with
        // characters outside it.
        struct __utimbuf64 times = {status.st_atime, status.st_mtime};
        ::_utime64(PathToUtf8(path).c_str(), &times);
    }
    RestoreTimes(native, before);
    ::SetFileAttributesW(native.c_str(), attributes);
    return false;
}

} // namespace Halvern::Base
