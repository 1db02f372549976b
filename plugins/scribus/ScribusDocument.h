// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "ScribusPaths.h"

#include "KitNames.h"
#include "pluginkit/Compression.h"
#include "pluginkit/Document.h"
#include "pluginkit/EncodedText.h"
#include "pluginkit/InputFile.h"

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace Halvern::Formats::Scribus {

/// A document, compressed or not, with the files that its objects show.
class ScribusDocument : public Document
{
public:
    explicit ScribusDocument(const std::filesystem::path& path);

    std::vector<DocumentLink> Links() const override;
    std::optional<std::string> UnlistedPathOf(const std::string& id) const override;
    void Rewrite(const NewPaths& paths) override;

private:
    std::filesystem::path Folder() const { return m_file.Path().parent_path(); }
    void FindAll();

    InputFile m_file;
    Compression m_compression;
    EncodedText m_text;
    std::vector<ScribusPath> m_paths;
    /// Places in m_paths.
    std::unordered_map<std::string_view, std::size_t> m_byId;
};

} // namespace Halvern::Formats::Scribus
