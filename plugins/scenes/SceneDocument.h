// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "ReferenceList.h"
#include "SceneText.h"

#include "KitNames.h"
#include "pluginkit/Document.h"

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace Halvern::Formats::Scenes {

/// A scene with the references that it holds. What is wrong with the file is a FormatError of the
/// constructor.
class SceneDocument : public Document
{
public:
    /// Finds everything in a text; positions of its FormatErrors count in that.
    using Find = ReferenceList (*)(std::string_view text);

    SceneDocument(const std::filesystem::path& path, Find findInXml, Find findInText);

    std::vector<DocumentLink> Links() const override;
    std::optional<std::string> UnlistedPathOf(const std::string& id) const override;
    void Rewrite(const NewPaths& paths) override;

private:
    bool IsListed(const Reference& reference, const std::string& path) const;
    std::vector<bool> PrefixesInTheWay(const NewPaths& paths) const;

    SceneText m_text;
    ReferenceList m_list;
};

} // namespace Halvern::Formats::Scenes
