// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "SlvsPaths.h"

#include "KitNames.h"
#include "pluginkit/Document.h"

#include <filesystem>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace Halvern::Formats::SolveSpace {

/// A model with the models that its groups link, and its pictures.
class SlvsDocument : public Document
{
public:
    explicit SlvsDocument(const std::filesystem::path& path);

    std::vector<DocumentLink> Links() const override;
    /// A second name is a link only where it leads to a file.
    std::optional<std::string> UnlistedPathOf(const std::string& id) const override;
    void Rewrite(const NewPaths& paths) override;

private:
    std::filesystem::path Folder() const { return m_file.Path().parent_path(); }
    std::string PathOf(const SlvsPath& path) const;

    InputFile m_file;
    std::vector<SlvsPath> m_paths;
    /// Places in m_paths.
    std::unordered_map<std::string_view, std::size_t> m_byId;
};

} // namespace Halvern::Formats::SolveSpace
