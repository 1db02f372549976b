#pragma once

#include "GlbContainer.h"
#include "UriFinder.h"

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace Halvern::Formats::Gltf {

/// A glTF file of either form with the uris it holds. What is wrong with the file is a FormatError
/// of the constructor.
class GltfDocument
{
public:
    explicit GltfDocument(const std::filesystem::path& path);

    /// Every uri that names a file; begin and end count in Json().
    const std::vector<UriString>& Uris() const { return m_uris; }
    std::string PathOf(const UriString& uri) const;
    const std::string& Json() const { return m_json; }

    /// Puts `json` in the place of the document; everything else of the file stays.
    void Replace(std::string json);

private:
    InputFile m_file;
    std::optional<GlbLayout> m_glb;
    std::string m_json;
    std::vector<UriString> m_uris;
};

} // namespace Halvern::Formats::Gltf
