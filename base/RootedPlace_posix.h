// SPDX-License-Identifier: Apache-2.0

// The ways below an open folder. For the POSIX sources of this folder alone.

#pragma once

#include "base/FileResult.h"
#include "base/PosixApi.h"

#include <filesystem>
#include <string>
#include <vector>

namespace Halvern::Base {

/// Where an entry is: its folder, open, and its name there.
struct Place
{
    Descriptor folder;
    std::string name;
    /// For texts.
    std::filesystem::path relative;

    FileResult Failure() const { return LastFailure(relative.native()); }
};

/// Goes down one folder; `relative` is for the text of a failure.
FileResult EnterFolder(int folder, const std::string& name, const std::filesystem::path& relative,
                       Descriptor& entered);
FileResult OpenFolderBelow(int root, const std::vector<std::filesystem::path>& names,
                           Descriptor& folder);
/// The root itself has the name ".".
FileResult FindPlace(int root, const std::filesystem::path& relative, Place& place);
/// Fails for the root itself.
FileResult FindEntry(int root, const std::filesystem::path& relative, Place& place);

bool IsLink(const Place& place);
/// Of the entry itself. False when it cannot be looked at.
bool ReadStatus(const Place& place, FileStatus& status);
FileResult LinkRefusal(const std::filesystem::path& link);

/// RootedFolder::Move.
FileResult MoveEntry(const Place& from, const Place& to, bool replace);
/// RootedFolder::ReplaceUnchanged.
FileResult ReplaceUnchangedEntry(const Place& from, const Place& to, const FileStatus& expected);

/// The names in an open folder.
FileResult ReadNames(int folder, std::vector<std::filesystem::path>& names);

} // namespace Halvern::Base
