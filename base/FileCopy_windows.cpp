// SPDX-License-Identifier: Apache-2.0

#include "base/FileCopy.h"

#include "base/ContentHash.h"
#include "base/FileStatus.h"
#include "base/NativePath.h"
#include "base/Utf.h"
#include "base/WindowsApi.h"
#include "base/WindowsNames.h"
#include "base/WorkWatch.h"

#include <array>
#include <cstdio>
#include <random>

namespace Halvern::Base {

namespace {

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
    return FileResult::Refused(FileProblem::NameTaken, "Destination file exists");
}

/// Whether a copy may get this name.
FileResult CheckName(const std::filesystem::path& target)
{
    const std::u16string text = PathText(target);
    if (const std::u16string_view name = ForbiddenName(text); !name.empty())
        return FileResult::Refused(FileProblem::NameRefused,
                                   "Windows does not allow the name \"" + ToUtf8Lossy(name) + '"');
    return Exists(target) ? NameIsTaken() : FileResult();
}

/// Called by the system after each piece of a copy, and before the first.
DWORD CALLBACK OnPiece(LARGE_INTEGER, LARGE_INTEGER copied, LARGE_INTEGER, LARGE_INTEGER,
                       DWORD stream, DWORD, HANDLE, HANDLE, LPVOID tells)
{
    WorkWatch* const watch = WorkWatch::OfThisThread();
    if (!watch)
        return PROGRESS_QUIET;
    if (tells && stream == 1) // the others are not counted in the file's size
        watch->Copied(static_cast<std::uint64_t>(copied.QuadPart));
    return watch->GoesOn() ? PROGRESS_CONTINUE : PROGRESS_CANCEL;
}

FileResult CopyInPieces(const std::filesystem::path& source, const std::wstring& target, bool tells)
{
    if (::CopyFileExW(ApiPath(source).c_str(), target.c_str(), &OnPiece, tells ? &tells : nullptr,
                      nullptr, COPY_FILE_FAIL_IF_EXISTS))
        return {};
    return ::GetLastError() == ERROR_REQUEST_ABORTED
               ? FileResult::Refused(FileProblem::Stopped, "stopped")
               : LastFailure();
}

/// Copies to a name for a while, asks `isGood` about what was copied, and gives the copy its name.
template <typename Check>
FileResult CopyChecked(const std::filesystem::path& source, const std::filesystem::path& target,
                       bool tells, Check check)
{
    if (FileResult taken = CheckName(target); !taken)
        return taken;
    const std::wstring native = ApiPath(target);
    const std::wstring temporary = TemporaryBeside(target);
    FileResult result = CopyInPieces(source, temporary, tells);
    if (result)
        result = check();
    // Moved without the flag to replace: a file that came into being meanwhile stays.
    if (result &&
        !WithPatience([&] { return ::MoveFileExW(temporary.c_str(), native.c_str(), 0) != 0; }))
        result = LastFailure();
    if (result)
        return {};
    RemoveTemporary(temporary);
    return result.Code() == ERROR_ALREADY_EXISTS ? NameIsTaken() : result;
}

/// The source of a copy: nobody renames it meanwhile, and nobody writes it unless somebody had it
/// open for that before.
class Source
{
public:
    explicit Source(const std::filesystem::path& path)
    {
        for (const DWORD share : {DWORD(FILE_SHARE_READ), DWORD(FILE_SHARE_READ | FILE_SHARE_WRITE),
                                  DWORD(FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE)}) {
            m_handle = ::CreateFileW(ApiPath(path).c_str(), GENERIC_READ, share, nullptr,
                                     OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
            if (*this || ::GetLastError() != ERROR_SHARING_VIOLATION)
                return;
        }
    }
    ~Source()
    {
        if (*this)
            ::CloseHandle(m_handle);
    }
    Source(const Source&) = delete;
    Source& operator=(const Source&) = delete;

    explicit operator bool() const noexcept { return m_handle != INVALID_HANDLE_VALUE; }
    Handle Get() const noexcept { return reinterpret_cast<Handle>(m_handle); }

private:
    HANDLE m_handle = INVALID_HANDLE_VALUE;
};

} // namespace

FileResult CopyFileBytes(const std::filesystem::path& source, const std::filesystem::path& target)
{
    return CopyChecked(source, target, false, [] { return FileResult(); });
}

FileResult CopyUnchangedBytes(const std::filesystem::path& source,
                              const std::filesystem::path& target, FileStatus& copied,
                              ContentHash* hash)
{
    const Source in(source);
    if (!in)
        return LastFailure("Cannot open " + PathToUtf8(source) + " for input");
    const FileStatus before = ReadFileStatus(in.Get());
    ContentHash content;
    const auto check = [&] {
        if (hash) {
            if (FileResult hashed = HashContent(in.Get(), content); !hashed)
                return hashed;
        }
        // The bytes were copied from what the name leads to.
        return ReadFileStatus(in.Get()) == before && ReadFileStatus(source) == before
                   ? FileResult()
                   : FileResult::Refused(FileProblem::Changed,
                                         "The file changed while it was copied");
    };
    if (FileResult made = CopyChecked(source, target, true, check); !made)
        return made;
    copied = before;
    if (hash)
        *hash = content;
    return {};
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
