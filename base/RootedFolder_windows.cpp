// SPDX-License-Identifier: Apache-2.0

#include "base/RootedFolder.h"

#include "base/NativePath.h"
#include "base/RelativeWay.h"
#include "base/RootedPlace_windows.h"

namespace Halvern::Base {

namespace {

HANDLE Native(Handle handle)
{
    return reinterpret_cast<HANDLE>(handle);
}

bool IsFolderHandle(HANDLE handle)
{
    return ReadFileStatus(reinterpret_cast<Handle>(handle)).kind == FileKind::Folder;
}

/// Goes down into a folder that may have to be made first; `isNew` says that it had to.
FileResult EnterOrMake(Way& way, const std::wstring& name, const std::filesystem::path& relative,
                       bool& isNew)
{
    FileResult result = EnterFolder(way, name, relative);
    if (result.Problem() != FileProblem::Missing)
        return result;
    isNew = MakeFolderIn(way.Last(), name, FILE_ATTRIBUTE_NORMAL);
    if (!isNew && ::GetLastError() != ERROR_ALREADY_EXISTS)
        return LastFailure(PathToUtf8(relative));
    return EnterFolder(way, name, relative);
}

/// Reading the placeholder of a file that a cloud has, and not what it stands for, would give
/// nothing.
bool OpenContent(const Place& place, NtFile& opened)
{
    FILE_ATTRIBUTE_TAG_INFO info = {};
    ::GetFileInformationByHandleEx(opened.Get(), FileAttributeTagInfo, &info, sizeof info);
    if ((info.FileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) == 0)
        return true;
    const FileStatus entry = ReadFileStatus(reinterpret_cast<Handle>(opened.Get()));
    NtFile content;
    if (!OpenThrough(place.Folder(), place.name, GENERIC_READ, SharedByAll, content))
        return false;
    const FileStatus reached = ReadFileStatus(reinterpret_cast<Handle>(content.Get()));
    if (reached.device != entry.device || reached.index != entry.index) {
        ::SetLastError(ERROR_FILE_INVALID);
        return false;
    }
    opened = std::move(content);
    return true;
}

/// Flushing takes write access, which a read-only file refuses.
bool FlushFileIn(const Place& place)
{
    NtFile file;
    if (OpenIn(place.Folder(), place.name, GENERIC_WRITE, SharedByAll, file))
        return ::FlushFileBuffers(file.Get());
    NtFile attributes;
    FILE_BASIC_INFO info = {};
    if (::GetLastError() != ERROR_ACCESS_DENIED ||
        !OpenIn(place.Folder(), place.name, FILE_WRITE_ATTRIBUTES, SharedByAll, attributes) ||
        !::GetFileInformationByHandleEx(attributes.Get(), FileBasicInfo, &info, sizeof info) ||
        (info.FileAttributes & FILE_ATTRIBUTE_READONLY) == 0) {
        ::SetLastError(ERROR_ACCESS_DENIED);
        return false;
    }
    FILE_BASIC_INFO writable = {};
    writable.FileAttributes = info.FileAttributes & ~DWORD(FILE_ATTRIBUTE_READONLY);
    if (writable.FileAttributes == 0) // which would stand for leaving them as they are
        writable.FileAttributes = FILE_ATTRIBUTE_NORMAL;
    if (!::SetFileInformationByHandle(attributes.Get(), FileBasicInfo, &writable, sizeof writable))
        return false;
    const bool flushed = OpenIn(place.Folder(), place.name, GENERIC_WRITE, SharedByAll, file) &&
                         ::FlushFileBuffers(file.Get());
    const DWORD failure = ::GetLastError();
    writable.FileAttributes = info.FileAttributes;
    ::SetFileInformationByHandle(attributes.Get(), FileBasicInfo, &writable, sizeof writable);
    ::SetLastError(failure);
    return flushed;
}

} // namespace

FileResult RootedFolder::Open(const std::filesystem::path& root)
{
    NtFile opened(::CreateFileW(ApiPath(root).c_str(), FILE_LIST_DIRECTORY | FILE_READ_ATTRIBUTES,
                                SharedByAll, nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS,
                                nullptr));
    if (!opened)
        return LastFailure(PathToUtf8(root));
    if (!IsFolderHandle(opened.Get()))
        return FileResult::Failed(PathToUtf8(root), ERROR_DIRECTORY);
    RootedFolder folder;
    folder.m_path = root;
    folder.m_root = reinterpret_cast<Handle>(opened.Release());
    *this = std::move(folder);
    return {};
}

FileResult RootedFolder::Status(const std::filesystem::path& entry, FileStatus& status) const
{
    status = {};
    Place place;
    FileResult found = FindPlace(Native(m_root), entry, place);
    if (found && !ReadStatus(place, status))
        found = place.Failure();
    return found.Problem() == FileProblem::Missing ? FileResult() : found;
}

FileResult RootedFolder::List(const std::filesystem::path& folder,
                              std::vector<std::filesystem::path>& names) const
{
    std::vector<std::filesystem::path> parts;
    Way way;
    if (FileResult taken = NamesOnWay(folder, parts); !taken)
        return taken;
    if (FileResult found = OpenFolderBelow(Native(m_root), parts, way); !found)
        return found;
    const FileResult read = ReadNames(way.Last(), names);
    return read ? FileResult() : FileResult::Failed(PathToUtf8(folder), read.Code());
}

FileResult RootedFolder::MakeFolders(const std::filesystem::path& folder,
                                     std::vector<std::filesystem::path>* made) const
{
    std::vector<std::filesystem::path> names;
    if (FileResult taken = NamesOnWay(folder, names); !taken)
        return taken;
    Way way;
    way.root = Native(m_root);
    std::filesystem::path relative;
    for (const std::filesystem::path& name : names) {
        relative /= name;
        bool isNew = false;
        FileResult entered = EnterOrMake(way, name.native(), relative, isNew);
        if (isNew && made)
            made->push_back(relative);
        if (!entered)
            return entered;
    }
    return {};
}

FileResult RootedFolder::MakePrivateFolder(const std::filesystem::path& folder) const
{
    Place place;
    if (FileResult found = FindEntry(Native(m_root), folder, place); !found)
        return found;
    return MakeFolderIn(place.Folder(), place.name, FILE_ATTRIBUTE_HIDDEN) ? FileResult()
                                                                           : place.Failure();
}

FileResult RootedFolder::Hide(const std::filesystem::path& folder) const
{
    Place place;
    if (FileResult found = FindEntry(Native(m_root), folder, place); !found)
        return found;
    NtFile opened;
    FILE_BASIC_INFO info = {};
    if (!place.Open(FILE_READ_ATTRIBUTES | FILE_WRITE_ATTRIBUTES, SharedByAll, opened) ||
        !::GetFileInformationByHandleEx(opened.Get(), FileBasicInfo, &info, sizeof info))
        return place.Failure();
    if (IsLink(place.Folder(), place.name, opened.Get()))
        return LinkRefusal(folder);
    FILE_BASIC_INFO hidden = {};
    hidden.FileAttributes = info.FileAttributes | FILE_ATTRIBUTE_HIDDEN;
    return ::SetFileInformationByHandle(opened.Get(), FileBasicInfo, &hidden, sizeof hidden)
               ? FileResult()
               : place.Failure();
}

FileResult RootedFolder::Move(const std::filesystem::path& from, const std::filesystem::path& to,
                              Existing existing) const
{
    Place source;
    Place target;
    if (FileResult found = FindEntry(Native(m_root), from, source); !found)
        return found;
    if (FileResult found = FindEntry(Native(m_root), to, target); !found)
        return found;
    return MoveEntry(source, target, existing == Existing::Replace);
}

FileResult RootedFolder::ReplaceUnchanged(const std::filesystem::path& from,
                                          const std::filesystem::path& to,
                                          const FileStatus& expected) const
{
    Place source;
    Place target;
    if (FileResult found = FindEntry(Native(m_root), from, source); !found)
        return found;
    if (FileResult found = FindEntry(Native(m_root), to, target); !found)
        return found;
    return ReplaceUnchangedEntry(source, target, expected);
}

FileResult RootedFolder::Remove(const std::filesystem::path& file) const
{
    Place place;
    if (FileResult found = FindEntry(Native(m_root), file, place); !found)
        return found;
    NtFile opened;
    const bool isOpen = WithPatience(
        [&] { return place.Open(DELETE | FILE_WRITE_ATTRIBUTES, SharedByAll, opened); });
    if (!isOpen)
        return place.Failure();
    if (EntryStatus(place.Folder(), place.name, opened.Get()).kind == FileKind::Folder)
        return FileResult::Refused(FileProblem::IsAFolder, PathToUtf8(file) + " is a folder");
    return DeleteOpened(opened.Get()) ? FileResult() : place.Failure();
}

FileResult RootedFolder::RemoveFolder(const std::filesystem::path& folder) const
{
    Place place;
    if (FileResult found = FindEntry(Native(m_root), folder, place); !found)
        return found;
    NtFile opened;
    if (!place.Open(DELETE | FILE_WRITE_ATTRIBUTES, SharedByAll, opened))
        return place.Failure();
    if (EntryStatus(place.Folder(), place.name, opened.Get()).kind != FileKind::Folder)
        return FileResult::Failed(PathToUtf8(folder), ERROR_DIRECTORY);
    return DeleteOpened(opened.Get()) ? FileResult() : place.Failure();
}

FileResult RootedFolder::OpenForReading(const std::filesystem::path& file, Handle& handle) const
{
    Place place;
    if (FileResult found = FindPlace(Native(m_root), file, place); !found)
        return found;
    NtFile opened;
    if (!place.Open(GENERIC_READ, SharedByAll, opened))
        return place.Failure();
    if (!place.name.empty() && IsLink(place.Folder(), place.name, opened.Get()))
        return LinkRefusal(file);
    if (ReadFileStatus(reinterpret_cast<Handle>(opened.Get())).kind != FileKind::File)
        return FileResult::Failed(PathToUtf8(file) + ": not a regular file");
    if (!OpenContent(place, opened))
        return place.Failure();
    handle = reinterpret_cast<Handle>(opened.Release());
    return {};
}

// The names in folders need no flush: the disks of Windows write them down before they are made.
FileResult RootedFolder::Flush(const std::filesystem::path& entry) const
{
    Place place;
    FileStatus status;
    if (FileResult found = FindPlace(Native(m_root), entry, place); !found)
        return found;
    if (!ReadStatus(place, status))
        return LastFailure("Cannot flush " + PathToUtf8(entry));
    if (status.kind == FileKind::Link)
        return LinkRefusal(entry);
    if (status.kind == FileKind::Folder || WithPatience([&] { return FlushFileIn(place); }))
        return {};
    return LastFailure("Cannot flush " + PathToUtf8(entry));
}

} // namespace Halvern::Base
