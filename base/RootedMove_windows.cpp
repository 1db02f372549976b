// SPDX-License-Identifier: Apache-2.0

// New names below an open folder.

#include "base/NativePath.h"
#include "base/RootedPlace_windows.h"

#include <algorithm>

namespace Halvern::Base {

namespace {

bool IsSame(const FileStatus& a, const FileStatus& b)
{
    return a.device == b.device && a.index == b.index;
}

bool IsSameFolder(const Place& a, const Place& b)
{
    return IsSame(ReadFileStatus(reinterpret_cast<Handle>(a.Folder())),
                  ReadFileStatus(reinterpret_cast<Handle>(b.Folder())));
}

/// Whether two places of one file are two names of it, and not one name in two spellings.
bool AreTwoNames(const Place& from, const Place& to)
{
    if (!IsSameFolder(from, to))
        return true;
    std::vector<std::filesystem::path> names;
    if (from.name == to.name || !ReadNames(from.Folder(), names))
        return false;
    const auto has = [&](const std::wstring& name) {
        return std::find(names.begin(), names.end(), name) != names.end();
    };
    return has(from.name) && has(to.name);
}

FileResult Rename(const Place& from, const Place& to, bool replace)
{
    NtFile file;
    const bool isOpen = WithPatience([&] { return from.Open(DELETE, SharedByAll, file); });
    if (!isOpen)
        return from.Failure();
    return RenameInto(file.Get(), to.Folder(), to.name, replace) ? FileResult() : to.Failure();
}

FileResult DropName(const Place& place)
{
    NtFile file;
    return place.Open(DELETE | FILE_WRITE_ATTRIBUTES, SharedByAll, file) && DeleteOpened(file.Get())
               ? FileResult()
               : place.Failure();
}

/// The system denies it when somebody has the replaced file open: later it may work.
FileResult ReplaceEntry(const Place& from, const Place& to)
{
    FileResult renamed;
    WithPatience([&] {
        renamed = Rename(from, to, true);
        ::SetLastError(renamed.Code());
        return bool(renamed);
    });
    if (renamed.Code() == ERROR_ACCESS_DENIED)
        return FileResult::Failed(renamed.What(), renamed.Code(), true);
    return renamed;
}

bool IsReadOnly(const Place& place)
{
    NtFile opened;
    BY_HANDLE_FILE_INFORMATION info = {};
    return place.Open(FILE_READ_ATTRIBUTES, SharedByAll, opened) &&
           ::GetFileInformationByHandle(opened.Get(), &info) &&
           (info.dwFileAttributes & FILE_ATTRIBUTE_READONLY) != 0;
}

FileResult Replace(const Place& from, const Place& to)
{
    FileStatus moved;
    FileStatus replaced;
    if (!ReadStatus(from, moved))
        return from.Failure();
    if (!ReadStatus(to, replaced))
        return Rename(from, to, true);
    if (IsSame(moved, replaced))
        return AreTwoNames(from, to) ? DropName(from) : Rename(from, to, true);
    if (replaced.kind == FileKind::Folder)
        return FileResult::Refused(FileProblem::IsAFolder,
                                   PathToUtf8(to.relative) + " is a folder");
    if (moved.kind == FileKind::Folder)
        return FileResult::Failed(PathToUtf8(to.relative), ERROR_DIRECTORY);
    if (IsReadOnly(to))
        return FileResult::Failed(PathToUtf8(to.relative), ERROR_ACCESS_DENIED);
    return ReplaceEntry(from, to);
}

} // namespace

FileResult ReplaceUnchangedEntry(const Place& from, const Place& to, const FileStatus& expected)
{
    FileStatus there;
    if (!ReadStatus(to, there))
        return to.Failure();
    const bool isStill = there.kind == expected.kind && there.size == expected.size &&
                         there.modified == expected.modified && IsSame(there, expected);
    if (!isStill)
        return FileResult::Refused(FileProblem::Changed,
                                   PathToUtf8(to.relative) + " changed at this moment");
    return Replace(from, to);
}

FileResult MoveEntry(const Place& from, const Place& to, bool replace)
{
    if (replace)
        return Replace(from, to);
    // An entry that is given its own name would take it.
    FileStatus there;
    if (from.relative == to.relative && ReadStatus(to, there))
        return FileResult::Failed(PathToUtf8(to.relative), ERROR_ALREADY_EXISTS);
    return Rename(from, to, false);
}

} // namespace Halvern::Base
