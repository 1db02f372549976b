// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "ScadReferences.h"

#include "KitNames.h"
#include "pluginkit/Document.h"

#include <filesystem>
#include <string_view>
#include <unordered_map>

namespace Halvern::Formats::OpenScad {

/// A model with the files that it includes, uses and imports.
class ScadDocument : public Document
{
public:
    explicit ScadDocument(const std::filesystem::path& path);

    std::vector<DocumentLink> Links() const override;
    std::optional<std::string> UnlistedPathOf(const std::string& id) const override;
    std::optional<std::string> ObstacleTo(const std::string& id,
                                          const std::string& path) const override;
    void Rewrite(const NewPaths& paths) override;

private:
    std::filesystem::path Folder() const { return m_file.Path().parent_path(); }
    bool IsLink(const Reference& reference, const std::string& path) const;
    void AddIncludedImports(std::vector<DocumentLink>& links) const;

    InputFile m_file;
    std::vector<Reference> m_references;
    /// Places in m_references.
    std::unordered_map<std::string_view, std::size_t> m_byId;
};

} // namespace Halvern::Formats::OpenScad
