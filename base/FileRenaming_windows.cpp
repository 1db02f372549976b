// SPDX-License-Identifier: Apache-2.0

#include "base/FileRenaming.h"

#include "base/WindowsApi.h"

#include <cstddef>
#include <cstring>
#include <vector>

namespace Halvern::Base {

namespace {

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
    if (!file)
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

FileResult Move(const std::filesystem::path& from, const std::filesystem::path& to, DWORD flags)
{
    return ::MoveFileExW(ApiPath(from).c_str(), ApiPath(to).c_str(), flags) ? FileResult()
                                                                            : LastFailure();
}

} // namespace

FileResult Rename(const std::filesystem::path& from, const std::filesystem::path& to)
{
    return Move(from, to, MOVEFILE_REPLACE_EXISTING);
}

FileResult RenameOver(const std::filesystem::path& temporary, const std::filesystem::path& file)
{
    const std::wstring to = ApiPath(file);
    if (ReplaceWhileRead(ApiPath(temporary), to))
        return {};
    const FileResult moved =
        Move(temporary, file, MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH);
    // Access is denied, too, when somebody has the file open and shares everything.
    const bool isDenied =
        moved.Code() == ERROR_ACCESS_DENIED && !HasAttribute(to, FILE_ATTRIBUTE_READONLY);
    return isDenied ? FileResult::Failed({}, moved.Code(), true) : moved;
}

FileResult RenameToFree(const std::filesystem::path& from, const std::filesystem::path& to)
{
    return Move(from, to, 0);
}

void RemoveFile(const std::filesystem::path& file) noexcept
{
    const auto remove = [](const wchar_t* native) {
        ::SetFileAttributesW(native, FILE_ATTRIBUTE_NORMAL);
        ::DeleteFileW(native);
    };
    try {
        remove(ApiPath(file).c_str());
    } catch (...) {
        // Without memory for another form of it the path must do as it is, and most do.
        remove(file.c_str());
    }
}

FileResult RemoveName(const std::filesystem::path& file)
{
    const std::wstring native = ApiPath(file);
    const bool isRemoved = WithPatience([&] {
        const OpenFile opened(native, DELETE | FILE_WRITE_ATTRIBUTES, FILE_FLAG_OPEN_REPARSE_POINT);
        return opened && DeleteOpened(opened.Get());
    });
    return isRemoved ? FileResult() : LastFailure();
}

} // namespace Halvern::Base
