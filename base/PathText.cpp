// SPDX-License-Identifier: Apache-2.0

#include "base/PathText.h"

#include <cstddef>

namespace Halvern::Base {

namespace {

constexpr auto None = std::u16string_view::npos;

template <typename Char>
bool BeginsWithDrive(std::basic_string_view<Char> path) noexcept
{
    return path.size() > 1 && path[1] == Char(':') &&
           ((path[0] >= Char('A') && path[0] <= Char('Z')) ||
            (path[0] >= Char('a') && path[0] <= Char('z')));
}

bool IsSlashAt(std::u16string_view path, std::size_t index) noexcept
{
    return path.size() > index && IsSlash(path[index]);
}

} // namespace

bool HasDrive(std::u16string_view path) noexcept
{
    return BeginsWithDrive(path);
}

bool HasDrive(std::string_view path) noexcept
{
    return BeginsWithDrive(path);
}

bool IsUncPath(std::u16string_view path) noexcept
{
    return IsSlashAt(path, 0) && IsSlashAt(path, 1);
}

bool NamesServer(std::u16string_view path) noexcept
{
    return IsUncPath(path) && path.size() > 2 && !IsSlash(path[2]);
}

bool NamesDevice(std::u16string_view path) noexcept
{
    return IsUncPath(path) && IsSlashAt(path, 3) && (path[2] == u'?' || path[2] == u'.');
}

bool IsShareRoot(std::u16string_view path) noexcept
{
    if (!IsUncPath(path))
        return false;
    int names = 0;
    for (std::size_t i = 2; i < path.size(); ++i) {
        if (!IsSlash(path[i]) && IsSlash(path[i - 1]))
            ++names;
    }
    return names <= 2;
}

bool IsPosixAbsolutePath(std::u16string_view path, System system) noexcept
{
    return system == System::Posix && path.starts_with(u'/') && !IsSlashAt(path, 1);
}

bool IsAbsolutePath(std::u16string_view path, System system) noexcept
{
    return path.find(u':') != None || IsUncPath(path) || IsPosixAbsolutePath(path, system);
}

bool IsLocalPath(std::u16string_view path, System system) noexcept
{
    const std::size_t colon = path.find(u':');
    return IsPosixAbsolutePath(path, system) || colon == None || colon <= 1;
}

bool IsUrlLike(std::u16string_view path) noexcept
{
    const std::size_t colon = path.find(u':');
    return !path.starts_with(u'/') && colon != None && colon >= 2;
}

bool IsDriveRelative(std::u16string_view path, System system) noexcept
{
    if (system == System::Posix)
        return false;
    return HasDrive(path) ? !IsSlashAt(path, 2) : IsSlashAt(path, 0) && !IsSlashAt(path, 1);
}

std::u16string JoinPath(std::u16string_view folder, std::u16string_view below)
{
    std::u16string path(folder);
    if (below.empty())
        return path;
    if (!folder.ends_with(u'/'))
        path.push_back(u'/');
    return path.append(below);
}

std::u16string_view ParentPath(std::u16string_view path) noexcept
{
    const std::size_t slash = path.rfind(u'/');
    if (slash == None || path.size() == 1 || (slash == 1 && path.starts_with(u'/')))
        return {};
    if (slash == 0)
        return path.substr(0, 1);
    const std::u16string_view parent = path.substr(0, path[slash - 1] == u':' ? slash + 1 : slash);
    return parent == path ? std::u16string_view() : parent;
}

} // namespace Halvern::Base
