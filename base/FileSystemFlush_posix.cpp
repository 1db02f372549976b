// SPDX-License-Identifier: Apache-2.0

#include "base/FileSystemFlush.h"

#include "base/PosixApi.h"

#include <cerrno>

#include <fcntl.h>
#include <unistd.h>

namespace Halvern::Base {

FileResult FlushFileSystem(const std::filesystem::path& folder)
{
    const Descriptor opened(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (opened && ::syncfs(opened.Get()) == 0)
        return {};
    const int code = errno;
    const std::string what = "The disk of " + folder.native() + " cannot be flushed";
    if (opened && (code == ENOSYS || code == EOPNOTSUPP))
        return FileResult::Refused(FileProblem::NotOffered, what, static_cast<std::uint32_t>(code));
    return FileResult::Failed(what, static_cast<std::uint32_t>(code));
}

} // namespace Halvern::Base
