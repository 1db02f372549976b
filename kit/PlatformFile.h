// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <functional>
#include <string>
#include <string_view>

namespace Halvern::PluginKit {

/// Tells one state of a file from another.
struct FileStamp
{
    std::uint64_t size = 0;
    /// Last modification, in nanoseconds since 1970.
    std::int64_t modified = 0;
    std::uint64_t volume = 0;
    std::uint64_t id = 0;

    bool operator==(const FileStamp&) const = default;
};

/// What base/ does with files, for formats: what can fail throws FormatError with the system's own
/// text.
namespace Platform {

using Handle = std::intptr_t;
inline constexpr Handle NoHandle = -1;

/// Only regular files; the access time stays where the system lets it. HeldError when another
/// program does not let it be read.
Handle OpenForReading(const std::filesystem::path& file);
/// NoHandle when something of that name exists already.
Handle CreateExclusively(const std::filesystem::path& file);
FileStamp StampOf(Handle handle);
/// May read less than asked for; 0 at the end of the file.
std::size_t ReadSome(Handle handle, std::uint64_t offset, char* buffer, std::size_t size);
void WriteAll(Handle handle, std::string_view bytes);
void FlushToDisk(Handle handle);
void Close(Handle handle) noexcept;
/// Gives `copy`, open as `handle`, the permissions or attributes of `file`.
void CopyPermissions(const std::filesystem::path& file, const std::filesystem::path& copy,
                     Handle handle);
/// Puts `temporary` in the place of `file`, in one step, and makes that last. HeldError when
/// another program has the file open.
void RenameOver(const std::filesystem::path& temporary, const std::filesystem::path& file);
/// Even when it is read-only. That it stays is no failure.
void Remove(const std::filesystem::path& file) noexcept;

// These answer no, or nothing, for what cannot be looked at.
bool Exists(const std::filesystem::path& file);
bool IsFile(const std::filesystem::path& file);
bool IsFolder(const std::filesystem::path& folder);
bool IsSameFile(const std::filesystem::path& a, const std::filesystem::path& b);
/// Where a symbolic link leads.
std::filesystem::path Resolved(const std::filesystem::path& file);
/// Gives `visit` the names in a folder, in no order, until it returns false. On Windows a name with
/// a lone surrogate is left out: no link can hold it.
void VisitNames(const std::filesystem::path& folder,
                const std::function<bool(const std::string& name)>& visit);

/// Whether a path begins with the name of a server, as paths of Windows may.
bool IsNetworkPath(const std::filesystem::path& path);

} // namespace Platform

} // namespace Halvern::PluginKit
