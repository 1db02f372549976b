// SPDX-License-Identifier: Apache-2.0

#include "FolderNames.h"

#include "KitNames.h"
#include "base/Directory.h"
#include "pluginkit/FilePaths.h"
#include "pluginkit/FormatError.h"

#include <algorithm>

namespace Halvern::Formats::Blender {

namespace {

constexpr std::size_t MaxNames = 1'000'000;

} // namespace

const std::vector<std::string>& FolderNames::NamesIn(const std::string& folder)
{
    const auto [known, isNew] = m_names.try_emplace(folder);
    std::vector<std::string>& names = known->second;
    if (!isNew)
        return names;
    Base::VisitNames(PathIn(m_base, folder), [&](const std::string& name) {
        names.push_back(name);
        if (++m_count > MaxNames)
            throw FormatError("sequences in folders of more than " + std::to_string(MaxNames) +
                              " files");
        return true;
    });
    std::sort(names.begin(), names.end());
    return names;
}

std::vector<std::string> FolderNames::NamesWith(const std::string& folder,
                                                std::string_view beginning)
{
    const std::vector<std::string>& names = NamesIn(folder);
    const auto first = std::lower_bound(names.begin(), names.end(), beginning);
    const auto last = std::find_if(
        first, names.end(), [&](const std::string& name) { return !name.starts_with(beginning); });
    return {first, last};
}

} // namespace Halvern::Formats::Blender
