// SPDX-License-Identifier: Apache-2.0

#include "kit/PlatformFile.h"

#include "base/Directory.h"
#include "base/FileHandle.h"
#include "base/FileRenaming.h"
#include "base/FileStatus.h"
#include "base/NativePath.h"
#include "pluginkit/FormatError.h"

namespace Halvern::PluginKit::Platform {

namespace {

/// Throws unless it succeeded. `action` stands for what has no reason of its own.
void Require(const Base::FileResult& result, const char* action)
{
    if (result)
        return;
    std::string reason =
        result.What().empty() ? std::string(action) + ": " + result.Text() : result.Text();
    while (reason.ends_with('.')) // the system's own full stop; more may follow
        reason.pop_back();
    if (result.IsHeld())
        throw HeldError(reason);
    throw FormatError(reason);
}

} // namespace

Handle OpenForReading(const std::filesystem::path& file)
{
    Handle handle = NoHandle;
    Require(Base::OpenForReading(file, handle), "the file cannot be opened");
    return handle;
}

Handle CreateExclusively(const std::filesystem::path& file)
{
    Handle handle = NoHandle;
    Require(Base::CreateExclusively(file, handle), "a temporary file cannot be made");
    return handle;
}

FileStamp StampOf(Handle handle)
{
    const Base::FileStatus status = Base::ReadFileStatus(handle);
    if (!status.Exists())
        throw FormatError("the file's state cannot be read");
    return {status.size, status.modified, status.device, status.index};
}

std::size_t ReadSome(Handle handle, std::uint64_t offset, char* buffer, std::size_t size)
{
    std::size_t got = 0;
    Require(Base::ReadSome(handle, offset, buffer, size, got), "the file cannot be read");
    return got;
}

void WriteAll(Handle handle, std::string_view bytes)
{
    Require(Base::WriteAll(handle, bytes), "the temporary file cannot be written");
}

void FlushToDisk(Handle handle)
{
    Require(Base::FlushToDisk(handle), "the temporary file cannot be flushed to the disk");
}

void Close(Handle handle) noexcept
{
    Base::Close(handle);
}

void CopyPermissions(const std::filesystem::path& file, const std::filesystem::path& copy,
                     Handle handle)
{
    Require(Base::CopyPermissions(file, copy, handle), "the file's permissions cannot be kept");
}

void RenameOver(const std::filesystem::path& temporary, const std::filesystem::path& file)
{
    Require(Base::RenameOver(temporary, file), "the file cannot be replaced");
}

void Remove(const std::filesystem::path& file) noexcept
{
    Base::RemoveFile(file);
}

bool Exists(const std::filesystem::path& file)
{
    return Base::Exists(file);
}

bool IsFile(const std::filesystem::path& file)
{
    return Base::IsFile(file);
}

bool IsFolder(const std::filesystem::path& folder)
{
    return Base::IsFolder(folder);
}

bool IsSameFile(const std::filesystem::path& a, const std::filesystem::path& b)
{
    return Base::IsSameFile(a, b);
}

std::filesystem::path Resolved(const std::filesystem::path& file)
{
    return Base::Resolved(file);
}

void VisitNames(const std::filesystem::path& folder,
                const std::function<bool(const std::string& name)>& visit)
{
    Base::VisitNames(folder, visit);
}

bool IsNetworkPath(const std::filesystem::path& path)
{
    return Base::IsServerPath(path);
}

} // namespace Halvern::PluginKit::Platform
