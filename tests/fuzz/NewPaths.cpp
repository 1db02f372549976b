// SPDX-License-Identifier: Apache-2.0

#include "NewPaths.h"

#include "syncplugin/ReferenceIds.h"

#include <iterator>

namespace Halvern::Fuzz {

namespace {

/// Without the extension: what kind of file a link leads to stays.
constexpr const char* Names[] = {
    "x",
    "Größe 木 (2)",
    "it's \"quoted\"",
    "a & b <c> d",
    "100%",
    "a%20b",
    "#1 ~ $x {y} [z]",
    "${KIPRJMOD}",
    "semi;colon,comma=1",
    "a /* no comment */",
    "a // comment",
    " blanks around ",
    "-o 1 2",
    "two\nlines",
    "tab\tulator",
    "(brackets) and ) ",
    "]]>",
    "&amp;&#65;",
    ".hidden",
    "frame_0001",
    "tile.1001",
    "\xF0\x9F\x8C\xB3 \xC2\xA0\xE2\x80\xA8",
    "several.dots.",
    "url(x)",
    "q?x=1",
    "a.png",
    "1",
};

constexpr const char* Folders[] = {
    "",
    "elsewhere/",
    "../",
    "../../lib/",
    "a b/",
    "ü/木/",
    "/srv/cloud/",
    "/srv/a b/100%/",
    "sub/",
    "./",
    "tex/",
    "deep/er/and/deep/er/and/deep/er/and/deep/er/and/deep/er/and/deep/er/",
};

template <typename Table>
std::string OneOf(const Table& table, Choices& choices)
{
    return table[choices.Below(std::size(table))];
}

std::string NameIn(const std::string& path)
{
    return path.substr(path.rfind('/') + 1);
}

std::string ExtensionOf(const std::string& path)
{
    const std::string name = NameIn(path);
    const std::size_t dot = name.rfind('.');
    return dot == std::string::npos || dot == 0 ? std::string() : name.substr(dot);
}

std::string SetOf(const std::string& id)
{
    return id.substr(0, id.rfind('#'));
}

bool IsUsable(const std::string& name)
{
    return !name.empty() && name != "." && name != ".." &&
           name.find_first_of("\\:") == std::string::npos;
}

std::string ChoosePath(const Link& link, const Links& links, Choices& choices)
{
    const std::string folder = OneOf(Folders, choices);
    const std::string own = NameIn(link.path);
    switch (choices.Below(5)) {
    case 0:
        return link.path;
    case 1: {
        const Link& other = links[choices.Below(links.size())];
        return ExtensionOf(other.path) == ExtensionOf(own) ? other.path : link.path;
    }
    case 2:
        return folder + OneOf(Names, choices) + ExtensionOf(own);
    default:
        return folder + (IsUsable(own) ? own : "x");
    }
}

void ChooseForSet(const Link& link, Paths& folders, Paths& paths, Choices& choices)
{
    const auto [folder, isNew] = folders.emplace(SetOf(link.id), std::string());
    if (isNew)
        folder->second = OneOf(Folders, choices);
    paths[link.id] = folder->second + NameIn(link.path);
}

} // namespace

bool IsCompanion(const std::string& id)
{
    return id.starts_with(SyncPlugin::CompanionMark);
}

bool IsInSet(const std::string& id)
{
    return id.starts_with(SyncPlugin::SetMark);
}

Paths ChoosePaths(const Links& links, Choices& choices)
{
    Paths paths;
    Paths folders;
    const bool isOne = choices.OneIn(3);
    const std::size_t one = choices.Below(links.size());
    for (std::size_t i = 0; i < links.size(); ++i) {
        const Link& link = links[i];
        if (IsCompanion(link.id))
            continue;
        if (IsInSet(link.id))
            ChooseForSet(link, folders, paths, choices);
        else if (isOne ? i == one : !choices.OneIn(4))
            paths[link.id] = ChoosePath(link, links, choices);
    }
    return paths;
}

} // namespace Halvern::Fuzz
