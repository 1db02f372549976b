// SPDX-License-Identifier: Apache-2.0

#include "base/RootedFolder.h"

#include "base/RelativeWay.h"
#include "base/RootedPlace_posix.h"

#include <cerrno>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Halvern::Base {

namespace {

int Number(Handle handle)
{
    return static_cast<int>(handle);
}

/// Goes down into a folder that may have to be made first; `isNew` says that it had to.
FileResult EnterOrMake(int folder, const std::string& name, const std::filesystem::path& relative,
                       Descriptor& entered, bool& isNew)
{
    FileResult result = EnterFolder(folder, name, relative, entered);
    if (result.Problem() != FileProblem::Missing)
        return result;
    isNew = ::mkdirat(folder, name.c_str(), 0777) == 0;
    if (!isNew && errno != EEXIST)
        return LastFailure(relative.native());
    return EnterFolder(folder, name, relative, entered);
}

} // namespace

FileResult RootedFolder::Open(const std::filesystem::path& root)
{
    Descriptor opened(::open(root.c_str(), O_PATH | O_DIRECTORY | O_CLOEXEC));
    if (!opened)
        return LastFailure(root.native());
    RootedFolder folder;
    folder.m_path = root;
    folder.m_root = opened.Release();
    *this = std::move(folder);
    return {};
}

FileResult RootedFolder::Status(const std::filesystem::path& entry, FileStatus& status) const
{
    status = {};
    Place place;
    FileResult found = FindPlace(Number(m_root), entry, place);
    if (found && !ReadStatus(place, status))
        found = place.Failure();
    return found.Problem() == FileProblem::Missing ? FileResult() : found;
}

FileResult RootedFolder::List(const std::filesystem::path& folder,
                              std::vector<std::filesystem::path>& names) const
{
    std::vector<std::filesystem::path> way;
    Descriptor opened;
    if (FileResult taken = NamesOnWay(folder, way); !taken)
        return taken;
    if (FileResult found = OpenFolderBelow(Number(m_root), way, opened); !found)
        return found;
    const FileResult read = ReadNames(opened.Get(), names);
    return read ? FileResult() : FileResult::Failed(folder.native(), read.Code());
}

FileResult RootedFolder::MakeFolders(const std::filesystem::path& folder,
                                     std::vector<std::filesystem::path>* made) const
{
    std::vector<std::filesystem::path> names;
    Descriptor at;
    if (FileResult taken = NamesOnWay(folder, names); !taken)
        return taken;
    if (OpenFolderBelow(Number(m_root), names, at))
        return {};
    std::filesystem::path way;
    if (FileResult found = OpenFolderBelow(Number(m_root), {}, at); !found)
        return found;
    for (const std::filesystem::path& name : names) {
        way /= name;
        Descriptor next;
        bool isNew = false;
        FileResult entered = EnterOrMake(at.Get(), name.native(), way, next, isNew);
        if (isNew && made)
            made->push_back(way);
        if (!entered)
            return entered;
        at = std::move(next);
    }
    return {};
}

FileResult RootedFolder::MakePrivateFolder(const std::filesystem::path& folder) const
{
    Place place;
    if (FileResult found = FindEntry(Number(m_root), folder, place); !found)
        return found;
    const int made = ::mkdirat(place.folder.Get(), place.name.c_str(), 0700);
    return made == 0 ? FileResult() : place.Failure();
}

FileResult RootedFolder::Hide(const std::filesystem::path&) const
{
    return {};
}

FileResult RootedFolder::Move(const std::filesystem::path& from, const std::filesystem::path& to,
                              Existing existing) const
{
    Place source;
    Place target;
    if (FileResult found = FindEntry(Number(m_root), from, source); !found)
        return found;
    if (FileResult found = FindEntry(Number(m_root), to, target); !found)
        return found;
    return MoveEntry(source, target, existing == Existing::Replace);
}

FileResult RootedFolder::ReplaceUnchanged(const std::filesystem::path& from,
                                          const std::filesystem::path& to,
                                          const FileStatus& expected) const
{
    Place source;
    Place target;
    if (FileResult found = FindEntry(Number(m_root), from, source); !found)
        return found;
    if (FileResult found = FindEntry(Number(m_root), to, target); !found)
        return found;
    return ReplaceUnchangedEntry(source, target, expected);
}

FileResult RootedFolder::Remove(const std::filesystem::path& file) const
{
    Place place;
    if (FileResult found = FindEntry(Number(m_root), file, place); !found)
        return found;
    const int removed = ::unlinkat(place.folder.Get(), place.name.c_str(), 0);
    return removed == 0 ? FileResult() : place.Failure();
}

FileResult RootedFolder::RemoveFolder(const std::filesystem::path& folder) const
{
    Place place;
    if (FileResult found = FindEntry(Number(m_root), folder, place); !found)
        return found;
    if (::unlinkat(place.folder.Get(), place.name.c_str(), AT_REMOVEDIR) == 0)
        return {};
    // Some file systems say that something exists, and mean what is in the folder.
    return errno == EEXIST ? FileResult::Failed(folder.native(), ENOTEMPTY) : place.Failure();
}

FileResult RootedFolder::OpenForReading(const std::filesystem::path& file, Handle& handle) const
{
    Place place;
    if (FileResult found = FindPlace(Number(m_root), file, place); !found)
        return found;
    const FileResult opened =
        OpenRegularFile(place.folder.Get(), place.name.c_str(), O_NOFOLLOW, handle);
    if (!opened && opened.Code() == ELOOP)
        return LinkRefusal(file);
    return opened ? FileResult()
                  : FileResult::Failed(file.native() + (opened.What().empty() ? "" : ": ") +
                                           opened.What(),
                                       opened.Code());
}

FileResult RootedFolder::Flush(const std::filesystem::path& entry) const
{
    Place place;
    if (FileResult found = FindPlace(Number(m_root), entry, place); !found)
        return found;
    const Descriptor opened(::openat(place.folder.Get(), place.name.c_str(),
                                     O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC));
    if (!opened && errno == ELOOP)
        return LinkRefusal(entry);
    const bool mayNotRead = !opened && errno == EACCES;
    const FileResult failure = LastFailure("Cannot flush " + entry.native());
    const Descriptor folder(::openat(place.folder.Get(), ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    // With all that its file system has to write.
    if (mayNotRead && folder && ::syncfs(folder.Get()) == 0)
        return {};
    if (!opened)
        return failure;
    if (folder && Synchronize(opened.Get()) && Synchronize(folder.Get()))
        return {};
    return LastFailure("Cannot flush " + entry.native());
}

} // namespace Halvern::Base
