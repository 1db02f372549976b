// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "base/FileResult.h"

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace Halvern::Base {

/// Gives `visit` the names in a folder as UTF-8, in no order, hidden ones too, until it returns
/// false. A folder that cannot be read has none. On Windows a name with a lone surrogate is left
/// out: no text can name that file. Throws what `visit` throws.
void VisitNames(const std::filesystem::path& folder,
                const std::function<bool(const std::string& name)>& visit);

/// What a folder holds under a name.
enum class EntryKind
{
    /// A file, or a symbolic link to one.
    File,
    Folder,
    /// A pipe, a device, a socket, or a symbolic link to one.
    Other,
    /// A symbolic link or a junction.
    LinkToFolder,
    LinkToNothing,
    /// Gone since its name was read.
    Missing,
    /// The system does not tell.
    Unknown
};

struct FolderEntry
{
    /// UTF-8. What is no text in the name stands escaped, as EscapedUtf8 does it.
    std::string name;
    /// False when the name is no text: no path of this program leads there.
    bool isText = true;
    EntryKind kind = EntryKind::Unknown;
    /// Windows: the attribute. POSIX: the name begins with a dot.
    bool isHidden = false;
    /// With Unknown the reason.
    FileResult reason;
};

/// Gives `visit` what a folder holds, in no order, hidden entries too, until it returns false. A
/// folder that is a symbolic link is not listed on POSIX. After a failure some entries may have
/// been visited. Throws what `visit` throws.
FileResult VisitEntries(const std::filesystem::path& folder,
                        const std::function<bool(FolderEntry&& entry)>& visit);
/// What stands at a path, symbolic links at its end not followed. Requires: no root.
FolderEntry ReadEntry(const std::filesystem::path& path);

/// Whether Windows, by an entry's attributes and reparse tag, shows a symbolic link, a junction or
/// another name for something elsewhere. Files of a cloud provider and compressed ones, which are
/// reparse points as well, are what they look like.
bool IsLinkOfWindows(std::uint32_t attributes, std::uint32_t reparseTag) noexcept;

/// The name of an entry as Windows lists it. Nothing for the folder itself, the one above it, and a
/// name with a lone surrogate.
std::optional<std::string> NameOfEntry(std::u16string_view name);

/// Makes a folder and those above it. Success when it is there already, also because another
/// process made it meanwhile; a file of that name is a failure.
FileResult MakeFolders(const std::filesystem::path& folder);

/// Windows: sets the hidden attribute of what exists. POSIX: nothing, the name says it already.
void Hide(const std::filesystem::path& path);

} // namespace Halvern::Base
