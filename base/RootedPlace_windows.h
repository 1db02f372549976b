// SPDX-License-Identifier: Apache-2.0

// The ways below an open folder. For the Windows sources of this folder alone.

#pragma once

#include "base/NtFile_windows.h"

#include <filesystem>
#include <string>
#include <vector>

namespace Halvern::Base {

/// The folders on a way, open and kept in place: as long as this lives none of them is renamed,
/// deleted or replaced by a link.
struct Way
{
    HANDLE root = INVALID_HANDLE_VALUE;
    std::vector<NtFile> folders;

    HANDLE Last() const noexcept { return folders.empty() ? root : folders.back().Get(); }
};

/// Where an entry is: its folder, open, and its name there. The root itself has none.
struct Place
{
    Way way;
    std::wstring name;
    /// For texts.
    std::filesystem::path relative;

    HANDLE Folder() const noexcept { return way.Last(); }
    FileResult Failure() const;
    bool Open(DWORD access, DWORD share, NtFile& opened) const;
};

/// Goes down one folder more; `relative` is for the text of a failure.
FileResult EnterFolder(Way& way, const std::wstring& name, const std::filesystem::path& relative);
FileResult OpenFolderBelow(HANDLE root, const std::vector<std::filesystem::path>& names, Way& way);
FileResult FindPlace(HANDLE root, const std::filesystem::path& relative, Place& place);
/// Fails for the root itself.
FileResult FindEntry(HANDLE root, const std::filesystem::path& relative, Place& place);

/// Of the entry itself. False, with the system's last error, when it cannot be looked at.
bool ReadStatus(const Place& place, FileStatus& status);
FileResult LinkRefusal(const std::filesystem::path& link);

/// RootedFolder::Move.
FileResult MoveEntry(const Place& from, const Place& to, bool replace);
/// RootedFolder::ReplaceUnchanged.
FileResult ReplaceUnchangedEntry(const Place& from, const Place& to, const FileStatus& expected);

/// The names in an open folder.
FileResult ReadNames(HANDLE folder, std::vector<std::filesystem::path>& names);

} // namespace Halvern::Base
