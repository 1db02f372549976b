// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "UriReference.h"

#include "KitNames.h"
#include "pluginkit/Compression.h"
#include "pluginkit/Document.h"
#include "pluginkit/EncodedText.h"
#include "pluginkit/InputFile.h"

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace Halvern::Formats::Svg {

/// A drawing, compressed or not, or a style sheet, with the references that it holds. What is wrong
/// with the file is a FormatError of the constructor.
class SvgDocument : public Document
{
public:
    using FindReferences = std::vector<UriReference> (*)(std::string_view text);

    SvgDocument(const std::filesystem::path& path, bool isStyleSheet);

    std::vector<DocumentLink> Links() const override;
    std::optional<std::string> UnlistedPathOf(const std::string& id) const override;
    void Rewrite(const NewPaths& paths) override;

private:
    bool NamesFolder(const std::string& path) const;
    void FindAll(FindReferences find);
    void Replace(const std::string& bytes);

    InputFile m_file;
    Compression m_compression;
    bool m_isStyleSheet;
    EncodedText m_text;
    std::vector<UriReference> m_references;
};

} // namespace Halvern::Formats::Svg
