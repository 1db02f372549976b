// SPDX-License-Identifier: Apache-2.0

#include "base/RelativeWay.h"

#include "base/NativePath.h"
#include "base/Utf.h"
#include "base/WindowsNames.h"

namespace Halvern::Base {

namespace {

FileResult Refuse(FileProblem problem, const std::filesystem::path& relative, const char* reason)
{
    return FileResult::Refused(problem, PathToUtf8(relative) + reason);
}

/// A name must be one for the system as it is: what it would cut or take for something else names
/// another file. One with a slash, as the root of a path is, would lead anywhere, whatever was
/// checked before.
bool IsName(const std::filesystem::path& part)
{
    const std::u16string text = PathText(part);
    if (text.find(u'/') != std::u16string::npos)
        return false;
    return part.native().find(std::filesystem::path::value_type(0)) ==
               std::filesystem::path::string_type::npos &&
           ForbiddenName(text).empty();
}

} // namespace

FileResult NamesOnWay(const std::filesystem::path& relative,
                      std::vector<std::filesystem::path>& names)
{
    names.clear();
    if (relative.has_root_path())
        return Refuse(FileProblem::LeadsOutside, relative, " does not lie in the folder");
    for (const std::filesystem::path& part : relative) {
        if (part == "..")
            return Refuse(FileProblem::LeadsOutside, relative, " leads out of the folder");
        if (!IsName(part))
            return Refuse(FileProblem::NameRefused, relative, " is no name on this system");
        if (!part.empty() && part != ".")
            names.push_back(part);
    }
    return {};
}

} // namespace Halvern::Base
