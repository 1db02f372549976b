// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "DxfNames.h"
#include "DxfText.h"

#include "KitNames.h"
#include "pluginkit/Document.h"

#include <filesystem>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

namespace Halvern::Formats::Dxf {

/// A drawing with the files that it refers to.
class DxfDocument : public Document
{
public:
    explicit DxfDocument(const std::filesystem::path& path);

    std::vector<DocumentLink> Links() const override;
    std::optional<std::string> UnlistedPathOf(const std::string& id) const override;
    /// A font that lies beside the drawing is found by its name, and stays there.
    std::optional<std::string> ObstacleTo(const std::string& id,
                                          const std::string& path) const override;
    void Rewrite(const NewPaths& paths) override;

private:
    std::filesystem::path Folder() const { return m_file.Path().parent_path(); }
    std::string StoredPath(const DxfName& name) const;
    std::string PathOf(const DxfName& name) const;
    std::optional<DocumentLink> LinkOf(const DxfName& name) const;
    std::optional<std::string> FontBeside(const std::string& path) const;

    InputFile m_file;
    DxfNames m_found;
    DxfText m_text;
    /// Places in the names that were found.
    std::unordered_map<std::string, std::size_t> m_byId;
};

} // namespace Halvern::Formats::Dxf
