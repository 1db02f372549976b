// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "GlbContainer.h"
#include "UriFinder.h"

#include "KitNames.h"
#include "pluginkit/Document.h"

#include <filesystem>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace Halvern::Formats::Gltf {

/// A glTF file of either form with the uris it holds. What is wrong with the file is a FormatError
/// of the constructor.
class GltfDocument : public Document
{
public:
    explicit GltfDocument(const std::filesystem::path& path);

    std::vector<DocumentLink> Links() const override;
    /// A name that is a folder's is no link; beside a copy it may be something else.
    std::optional<std::string> UnlistedPathOf(const std::string& id) const override;
    void Rewrite(const NewPaths& paths) override;

private:
    std::string PathOf(const UriString& uri) const;
    void Replace(std::string json);

    InputFile m_file;
    std::optional<GlbLayout> m_glb;
    std::string m_json;
    /// Those that name a file; begin and end count in m_json.
    std::vector<UriString> m_uris;
    /// Places in m_uris by their ids.
    std::unordered_map<std::string_view, std::size_t> m_byId;
};

} // namespace Halvern::Formats::Gltf
