// SPDX-License-Identifier: Apache-2.0

#include "base/Directory.h"

#include "base/PosixApi.h"
#include "base/Utf.h"

#include <cerrno>
#include <memory>
#include <system_error>
#include <utility>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

namespace Halvern::Base {

namespace {

struct CloseListing
{
    void operator()(DIR* listing) const noexcept { ::closedir(listing); }
};
using Listing = std::unique_ptr<DIR, CloseListing>;

FileResult OpenListing(const std::filesystem::path& folder, Listing& listing)
{
    Descriptor opened(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_NOFOLLOW | O_CLOEXEC));
    if (!opened)
        return LastFailure();
    listing.reset(::fdopendir(opened.Get()));
    if (!listing)
        return LastFailure();
    opened.Release();
    return {};
}

EntryKind KindOf(const struct stat& status)
{
    if (S_ISREG(status.st_mode))
        return EntryKind::File;
    return S_ISDIR(status.st_mode) ? EntryKind::Folder : EntryKind::Other;
}

bool IsNotThere(int error)
{
    return error == ENOENT || error == ENOTDIR;
}

void AskForKind(FolderEntry& entry, int folder, const char* path)
{
    struct stat status = {};
    if (::fstatat(folder, path, &status, AT_SYMLINK_NOFOLLOW) != 0) {
        entry.kind = IsNotThere(errno) ? EntryKind::Missing : EntryKind::Unknown;
    } else if (!S_ISLNK(status.st_mode)) {
        entry.kind = KindOf(status);
    } else if (::fstatat(folder, path, &status, 0) != 0) {
        const bool isDead = IsNotThere(errno) || errno == ELOOP;
        entry.kind = isDead ? EntryKind::LinkToNothing : EntryKind::Unknown;
    } else {
        entry.kind = S_ISDIR(status.st_mode) ? EntryKind::LinkToFolder : KindOf(status);
    }
    if (entry.kind == EntryKind::Unknown)
        entry.reason = LastFailure();
}

FolderEntry EntryOf(int folder, const char* path, std::string name)
{
    FolderEntry entry;
    entry.isHidden = name.starts_with('.');
    AskForKind(entry, folder, path);
    entry.isText = IsUtf8(name);
    entry.name = entry.isText ? std::move(name) : EscapedUtf8(name);
    return entry;
}

} // namespace

void VisitNames(const std::filesystem::path& folder,
                const std::function<bool(const std::string& name)>& visit)
{
    std::error_code error;
    std::filesystem::directory_iterator entries(folder, error);
    for (; !error && entries != std::filesystem::directory_iterator(); entries.increment(error)) {
        if (!visit(entries->path().filename().native()))
            return;
    }
}

FileResult VisitEntries(const std::filesystem::path& folder,
                        const std::function<bool(FolderEntry&& entry)>& visit)
{
    Listing listing;
    if (const FileResult opened = OpenListing(folder, listing); !opened)
        return opened;
    const int number = ::dirfd(listing.get());
    for (;;) {
        errno = 0;
        const struct dirent* const found = ::readdir(listing.get());
        if (!found)
            return errno == 0 ? FileResult() : LastFailure();
        const std::string_view name = found->d_name;
        if (name == "." || name == "..")
            continue;
        if (!visit(EntryOf(number, found->d_name, std::string(name))))
            return {};
    }
}

FolderEntry ReadEntry(const std::filesystem::path& path)
{
    return EntryOf(AT_FDCWD, path.c_str(), path.filename().native());
}

FileResult MakeFolders(const std::filesystem::path& folder)
{
    std::error_code error;
    std::filesystem::create_directories(folder, error);
    // An existing file of that name is no error to create_directories on every library version.
    std::error_code ignored;
    if (!error && !std::filesystem::is_directory(folder, ignored))
        error = std::make_error_code(std::errc::not_a_directory);
    return error ? FileResult::Failed({}, static_cast<std::uint32_t>(error.value())) : FileResult();
}

void Hide(const std::filesystem::path&) {}

} // namespace Halvern::Base
