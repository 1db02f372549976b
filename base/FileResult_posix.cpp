// SPDX-License-Identifier: Apache-2.0

#include "base/FileResult.h"

#include <cerrno>
#include <system_error>

namespace Halvern::Base {

FileProblem ProblemOf(std::uint32_t code) noexcept
{
    switch (code) {
    case ENOENT:
        return FileProblem::Missing;
    case EEXIST:
        return FileProblem::NameTaken;
    case ENOTDIR:
        return FileProblem::NotAFolder;
    case EISDIR:
        return FileProblem::IsAFolder;
    case ENOTEMPTY:
        return FileProblem::NotEmpty;
    case ENOSPC:
    case EDQUOT:
        return FileProblem::NoSpace;
    case EXDEV:
        return FileProblem::OtherDisk;
    case ENAMETOOLONG:
        return FileProblem::NameRefused;
    default:
        return FileProblem::Other;
    }
}

std::string SystemErrorText(std::uint32_t code)
{
    return std::generic_category().message(static_cast<int>(code));
}

} // namespace Halvern::Base
