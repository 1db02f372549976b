// SPDX-License-Identifier: Apache-2.0

#include "base/FileCopy.h"

#include "base/FileStatus.h"
#include "base/NativePath.h"
#include "base/Utf.h"
#include "base/WindowsApi.h"
#include "base/WindowsNames.h"

#include <array>
#include <cstdio>
#include <random>

namespace Halvern::Base {

namespace {

// Scanners and indexers open what was just written, and let it go again within moments.
constexpr ULONGLONG PatienceMs = 2000;
constexpr DWORD PauseMs = 25;

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

/// A name that is free in the folder of `target`, and says nothing of the target's own, which may
/// be as long as names can be.
std::wstring TemporaryBeside(const std::filesystem::path& target)
{
    std::random_device random;
    for (;;) {
        std::array<char, 16> name{};
        std::snprintf(name.data(), name.size(), ".copy-%08x", random());
        const std::filesystem::path temporary = target.parent_path() / name.data();
        if (!Exists(temporary))
            return ApiPath(temporary);
    }
}

void RemoveTemporary(const std::wstring& native)
{
    // The copy of a read-only file is read-only, and such a file is not deleted.
    ::SetFileAttributesW(native.c_str(), FILE_ATTRIBUTE_NORMAL);
    ::DeleteFileW(native.c_str());
}

FileResult NameIsTaken()
{
    return FileResult::Failed("Destination file exists");
}

} // namespace

FileResult CopyFileBytes(const std::filesystem::path& source, const std::filesystem::path& target)
{
    const std::u16string text = PathText(target);
    if (const std::u16string_view name = ForbiddenName(text); !name.empty())
        return FileResult::Failed("Windows does not allow the name \"" + ToUtf8Lossy(name) + '"');
    if (Exists(target))
        return NameIsTaken();
    const std::wstring native = ApiPath(target);
    const std::wstring temporary = TemporaryBeside(target);
    // Moved without the flag to replace: a file that came into being meanwhile stays.
    if (::CopyFileW(ApiPath(source).c_str(), temporary.c_str(), TRUE) &&
        WithPatience([&] { return ::MoveFileExW(temporary.c_str(), native.c_str(), 0) != 0; }))
        return {};
    FileResult failure = LastFailure();
    RemoveTemporary(temporary);
    return failure.Code() == ERROR_ALREADY_EXISTS ? NameIsTaken() : failure;
}

bool CloneBytes(Handle, Handle) noexcept
{
    return false;
}

FileResult FlushFile(const std::filesystem::path& path)
{
    const std::wstring native = ApiPath(path);
    // Flushing takes write access, which the copy of a read-only file refuses.
    const DWORD attributes = ::GetFileAttributesW(native.c_str());
    const bool readOnly =
        attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_READONLY);
    if (readOnly)
        ::SetFileAttributesW(native.c_str(), attributes & ~DWORD(FILE_ATTRIBUTE_READONLY));
    const bool flushed = WithPatience([&] {
        const OpenFile file(native, GENERIC_WRITE);
        return file && ::FlushFileBuffers(file.Get());
    });
    FileResult result = flushed ? FileResult() : LastFailure("Cannot flush " + PathToUtf8(path));
    if (readOnly)
        ::SetFileAttributesW(native.c_str(), attributes);
    return result;
}

} // namespace Halvern::Base
