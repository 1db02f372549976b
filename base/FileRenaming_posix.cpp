// SPDX-License-Identifier: Apache-2.0

#include "base/FileRenaming.h"

#include "base/PosixApi.h"

#include <cerrno>
#include <cstdio>
#include <system_error>

#include <fcntl.h>
#include <unistd.h>

namespace Halvern::Base {

namespace {

/// A rename is on the disk once the folder is. Not every file system can do that, which is no
/// reason to fail: the file is whole either way.
void FlushFolder(const std::filesystem::path& folder)
{
    const Descriptor opened(::open(folder.c_str(), O_RDONLY | O_CLOEXEC | O_DIRECTORY));
    if (opened)
        static_cast<void>(::fsync(opened.Get()));
}

} // namespace

FileResult Rename(const std::filesystem::path& from, const std::filesystem::path& to)
{
    return ::rename(from.c_str(), to.c_str()) == 0 ? FileResult() : LastFailure();
}

FileResult RenameOver(const std::filesystem::path& temporary, const std::filesystem::path& file)
{
    const std::filesystem::path folder =
        file.parent_path(); // no memory for it afterwards is too late
    FileResult renamed = Rename(temporary, file);
    if (renamed)
        FlushFolder(folder);
    return renamed;
}

FileResult RenameToFree(const std::filesystem::path& from, const std::filesystem::path& to)
{
    if (::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0)
        return {};
    // Without that flag (some network file systems) a hard link refuses an existing name as well.
    if (errno != EINVAL || ::link(from.c_str(), to.c_str()) != 0)
        return LastFailure();
    ::unlink(from.c_str());
    return {};
}

void RemoveFile(const std::filesystem::path& file) noexcept
{
    std::error_code ignored;
    std::filesystem::remove(file, ignored);
}

FileResult RemoveName(const std::filesystem::path& file)
{
    return ::unlink(file.c_str()) == 0 ? FileResult() : LastFailure();
}

} // namespace Halvern::Base
