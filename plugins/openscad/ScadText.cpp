// SPDX-License-Identifier: Apache-2.0

#include "ScadText.h"

#include "KitNames.h"
#include "pluginkit/FormatError.h"
#include "pluginkit/LinkPaths.h"

#include <algorithm>

namespace Halvern::Formats::OpenScad {

std::string PathOf(const Reference& reference, const std::filesystem::path& folder)
{
    if (reference.kind == ReferenceKind::Computed)
        return Shown(reference.name);
    return WithSlashes(reference.name, folder);
}

std::string Written(const Reference& reference, std::string_view path)
{
    const bool isString = reference.kind == ReferenceKind::Import;
    std::string text;
    for (const char c : path) {
        const bool isControl = static_cast<unsigned char>(c) < 0x20;
        if (isControl || (c == '>' && !isString))
            throw FormatError("link " + reference.id + " cannot name " + std::string(path));
        if (isString && (c == '"' || c == '\\'))
            text.push_back('\\');
        text.push_back(c);
    }
    return text;
}

std::string Shown(std::string_view expression)
{
    std::string shown;
    for (const char c : expression) {
        if (c == '/')
            shown += "\u2215";
        else if (c == '\\')
            shown += "\u2216";
        else if (c == ':')
            shown += "\u2236";
        else
            shown.push_back(static_cast<unsigned char>(c) < 0x20 ? ' ' : c);
    }
    return shown;
}

} // namespace Halvern::Formats::OpenScad
