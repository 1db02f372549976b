// SPDX-License-Identifier: Apache-2.0

#include "base/LetterCase.h"

#include "base/Directory.h"
#include "base/FileStatus.h"
#include "base/PosixApi.h"

#include <algorithm>
#include <string>

#include <fcntl.h>
#include <linux/fs.h>
#include <linux/magic.h>
#include <sys/ioctl.h>
#include <sys/vfs.h>

namespace Halvern::Base {

namespace {

/// Of ASCII alone: what else is one letter to a file system differs.
std::string InOtherCase(std::string name)
{
    for (char& c : name)
        if ((c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'))
            c = static_cast<char>(c ^ 0x20);
    return name;
}

bool IsListed(const std::filesystem::path& folder, const std::string& name)
{
    bool isListed = false;
    VisitNames(folder, [&](const std::string& other) {
        isListed = other == name;
        return !isListed;
    });
    return isListed;
}

std::optional<bool> AskEntry(const std::filesystem::path& folder, const std::string& name)
{
    const std::string other = InOtherCase(name);
    const FileStatus status = ReadLinkStatus(folder / name);
    const FileStatus otherStatus = ReadLinkStatus(folder / other);
    if (other == name || !status.Exists())
        return std::nullopt;
    const bool isSame = otherStatus.Exists() && status.device == otherStatus.device &&
                        status.index == otherStatus.index;
    // Two names of one file may stand there.
    return isSame && !IsListed(folder, other);
}

/// By the first name that holds a letter.
std::optional<bool> AskEntries(const std::filesystem::path& folder)
{
    std::string name;
    VisitNames(folder, [&](const std::string& found) {
        if (InOtherCase(found) != found)
            name = found;
        return name.empty();
    });
    return AskEntry(folder, name);
}

/// The folder around it says nothing where one disk ends and another begins.
std::optional<bool> AskFolderAbove(const std::filesystem::path& folder)
{
    const std::filesystem::path above = folder.parent_path();
    if (ReadFileStatus(above).device != ReadFileStatus(folder).device)
        return std::nullopt;
    return AskEntry(above, folder.filename().native());
}

std::optional<bool> AskSystem(const std::filesystem::path& folder)
{
    const Descriptor opened(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (!opened)
        return std::nullopt;
    struct statfs system = {};
    if (::fstatfs(opened.Get(), &system) == 0 &&
        (system.f_type == MSDOS_SUPER_MAGIC || system.f_type == EXFAT_SUPER_MAGIC))
        return true;
    int flags = 0;
    if (::ioctl(opened.Get(), FS_IOC_GETFLAGS, &flags) != 0)
        return std::nullopt;
    return (flags & FS_CASEFOLD_FL) != 0;
}

} // namespace

std::optional<bool> FolderIgnoresLetterCase(const std::filesystem::path& folder)
{
    std::optional<bool> answer = AskEntries(folder);
    if (!answer)
        answer = AskSystem(folder);
    return answer ? answer : AskFolderAbove(folder);
}

} // namespace Halvern::Base
