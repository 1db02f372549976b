// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "base/FileHandle.h"
#include "base/FileResult.h"
#include "base/FileStatus.h"

#include <filesystem>
#include <vector>

namespace Halvern::Base {

/// What Move does where something has the new name.
enum class Existing
{
    Keep,
    Replace
};

/// A folder that is worked in by its open handle. Everything below it is named by relative paths,
/// and nothing leads out of it: a path that is absolute or goes up, and one through a symbolic link
/// (Windows: a junction or another reparse point that stands for another place), fails with
/// FileProblem::LeadsOutside and changes nothing, also when the link came a moment before. The
/// folder may be renamed or replaced meanwhile: what was opened is what is worked in.
///
/// An entry is what a name stands for: operations on a link are about the link itself. Failures say
/// the relative path. Everything but Open may be called from several threads at once; only a lack
/// of memory throws.
///
/// Requires: IsOpen, for everything but Open.
class RootedFolder
{
public:
    RootedFolder() noexcept = default;
    ~RootedFolder();
    RootedFolder(RootedFolder&& other) noexcept;
    RootedFolder& operator=(RootedFolder&& other) noexcept;
    RootedFolder(const RootedFolder&) = delete;
    RootedFolder& operator=(const RootedFolder&) = delete;

    /// The folder itself may be reached through links. A failure leaves open what was open.
    FileResult Open(const std::filesystem::path& root);
    bool IsOpen() const noexcept { return m_root != NoHandle; }
    /// As it was given to Open.
    const std::filesystem::path& Path() const noexcept { return m_path; }
    /// Whether Path still leads to the open folder.
    bool IsAtItsPath() const;

    /// Of an entry, or of the folder itself for an empty path. What is not there is no failure, but
    /// FileKind::Missing; a file where a folder should be on the way is one (NotAFolder).
    FileResult Status(const std::filesystem::path& entry, FileStatus& status) const;
    /// The names in a folder, hidden ones too, in no order; that of the root for an empty path.
    FileResult List(const std::filesystem::path& folder,
                    std::vector<std::filesystem::path>& names) const;

    /// Makes a folder and those above it. Success when it is there already. `made` gets those that
    /// were not there, the uppermost first, also when a later one failed.
    FileResult MakeFolders(const std::filesystem::path& folder,
                           std::vector<std::filesystem::path>* made = nullptr) const;
    /// Makes one folder, on POSIX for this user alone, on Windows hidden. Fails when the name is
    /// taken, even by a folder (NameTaken).
    FileResult MakePrivateFolder(const std::filesystem::path& folder) const;

    /// Windows: sets a folder's attribute. POSIX: a name says it by itself, and nothing is done.
    FileResult Hide(const std::filesystem::path& folder) const;

    /// Gives an entry another name, in one step. With Existing::Keep nothing is ever overwritten
    /// (NameTaken). With Replace a file or link of that name is replaced, a folder is not
    /// (IsAFolder); on Windows neither is a read-only file. A failure leaves both as they were.
    FileResult Move(const std::filesystem::path& from, const std::filesystem::path& to,
                    Existing existing) const;
    /// Puts a file in the place of another one, in one step, if that is still what `expected` says
    /// (kind, size, time, and which file it is); otherwise it fails (Changed), and both are as they
    /// were. Where the file system can exchange two names nothing that somebody puts there comes
    /// between the look and the replacement; elsewhere (Windows, some network file systems) the
    /// look comes a moment before it.
    FileResult ReplaceUnchanged(const std::filesystem::path& from, const std::filesystem::path& to,
                                const FileStatus& expected) const;
    /// Deletes a file or link, even a read-only one.
    FileResult Remove(const std::filesystem::path& file) const;
    /// Deletes a folder without content (otherwise NotEmpty).
    FileResult RemoveFolder(const std::filesystem::path& folder) const;

    /// As the function of FileHandle.h; a link is refused (LeadsOutside).
    FileResult OpenForReading(const std::filesystem::path& file, Handle& handle) const;
    /// Waits until the data of a file and its name, or a folder's names and its own, are on the
    /// disk. A folder that was made above it needs a flush of its own. Fails when the system cannot
    /// promise that.
    FileResult Flush(const std::filesystem::path& entry) const;

private:
    Handle m_root = NoHandle;
    std::filesystem::path m_path;
};

} // namespace Halvern::Base
