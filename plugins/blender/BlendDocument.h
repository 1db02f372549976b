// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "LinkFinder.h"

#include "KitNames.h"
#include "pluginkit/Document.h"
#include "pluginkit/InputFile.h"

namespace Halvern::Formats::Blender {

/// A .blend file with the paths it holds. What is wrong with the file is a FormatError of the
/// constructor.
class BlendDocument : public Document
{
public:
    explicit BlendDocument(const std::filesystem::path& path);

    std::vector<DocumentLink> Links() const override;
    std::optional<std::string> UnlistedPathOf(const std::string& id) const override;
    void RequireTogether(const NewPaths& wanted) const override;
    void Rewrite(const NewPaths& paths) override;

private:
    InputFile m_file;
    BlendLinks m_links;
};

} // namespace Halvern::Formats::Blender
