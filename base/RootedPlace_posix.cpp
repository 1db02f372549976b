// SPDX-License-Identifier: Apache-2.0

#include "base/RootedPlace_posix.h"

#include "base/RelativeWay.h"

#include <cerrno>
#include <memory>

#include <dirent.h>
#include <fcntl.h>
#include <linux/openat2.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace Halvern::Base {

namespace {

/// How often a name is looked at anew when it became a folder meanwhile.
constexpr int Patience = 10;
constexpr int FolderFlags = O_PATH | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC;

/// In one call of the system, which no rename meanwhile can lead astray. Fails on kernels before
/// 5.6 and where a container does not know the call.
int OpenAtOnce(int root, const char* way)
{
    struct open_how how = {};
    how.flags = FolderFlags;
    how.resolve = RESOLVE_BENEATH | RESOLVE_NO_SYMLINKS | RESOLVE_NO_MAGICLINKS;
    return static_cast<int>(::syscall(SYS_openat2, root, way, &how, sizeof how));
}

std::filesystem::path Join(const std::vector<std::filesystem::path>& names)
{
    std::filesystem::path way;
    for (const std::filesystem::path& name : names)
        way /= name;
    return way;
}

/// One folder after the other, none of them a link: the same, and says which one is in the way.
FileResult OpenStepByStep(int root, const std::vector<std::filesystem::path>& names,
                          Descriptor& folder)
{
    Descriptor at(::openat(root, ".", FolderFlags));
    if (!at)
        return LastFailure();
    std::filesystem::path way;
    for (const std::filesystem::path& name : names) {
        way /= name;
        Descriptor next;
        if (FileResult entered = EnterFolder(at.Get(), name.native(), way, next); !entered)
            return entered;
        at = std::move(next);
    }
    folder = std::move(at);
    return {};
}

} // namespace

FileResult LinkRefusal(const std::filesystem::path& link)
{
    return FileResult::Refused(FileProblem::LeadsOutside, link.native() + " is a symbolic link");
}

FileResult EnterFolder(int folder, const std::string& name, const std::filesystem::path& relative,
                       Descriptor& entered)
{
    for (int attempt = 0; attempt < Patience; ++attempt) {
        Descriptor opened(::openat(folder, name.c_str(), FolderFlags));
        if (opened) {
            entered = std::move(opened);
            return {};
        }
        FileResult failure = LastFailure(relative.native());
        struct stat info = {};
        if (failure.Problem() != FileProblem::NotAFolder ||
            ::fstatat(folder, name.c_str(), &info, AT_SYMLINK_NOFOLLOW) != 0)
            return failure;
        if (S_ISLNK(info.st_mode))
            break;
        // A folder now: what was no folder a moment ago is gone.
        if (!S_ISDIR(info.st_mode))
            return failure;
    }
    return LinkRefusal(relative);
}

FileResult OpenFolderBelow(int root, const std::vector<std::filesystem::path>& names,
                           Descriptor& folder)
{
    const std::filesystem::path way = names.empty() ? "." : Join(names);
    Descriptor opened(OpenAtOnce(root, way.c_str()));
    if (!opened)
        return OpenStepByStep(root, names, folder);
    folder = std::move(opened);
    return {};
}

FileResult FindPlace(int root, const std::filesystem::path& relative, Place& place)
{
    std::vector<std::filesystem::path> names;
    if (FileResult taken = NamesOnWay(relative, names); !taken)
        return taken;
    place.relative = relative;
    place.name = names.empty() ? std::string(1, '.') : names.back().native();
    if (!names.empty())
        names.pop_back();
    return OpenFolderBelow(root, names, place.folder);
}

FileResult FindEntry(int root, const std::filesystem::path& relative, Place& place)
{
    FileResult found = FindPlace(root, relative, place);
    if (found && place.name == ".")
        return FileResult::Refused(FileProblem::LeadsOutside, "the folder itself");
    return found;
}

bool ReadStatus(const Place& place, FileStatus& status)
{
    struct stat info = {};
    if (::fstatat(place.folder.Get(), place.name.c_str(), &info, AT_SYMLINK_NOFOLLOW) != 0)
        return false;
    status = StatusOf(info);
    return true;
}

bool IsLink(const Place& place)
{
    FileStatus status;
    return ReadStatus(place, status) && status.kind == FileKind::Link;
}

FileResult ReadNames(int folder, std::vector<std::filesystem::path>& names)
{
    names.clear();
    Descriptor opened(::openat(folder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!opened)
        return LastFailure();
    const std::unique_ptr<DIR, int (*)(DIR*)> entries(::fdopendir(opened.Get()), &::closedir);
    if (!entries)
        return LastFailure();
    static_cast<void>(opened.Release());
    for (errno = 0; const dirent* entry = ::readdir(entries.get()); errno = 0) {
        const std::string name = entry->d_name;
        if (name != "." && name != "..")
            names.emplace_back(name);
    }
    return errno == 0 ? FileResult() : LastFailure();
}

} // namespace Halvern::Base
