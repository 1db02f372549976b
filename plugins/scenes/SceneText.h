// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "KitNames.h"
#include "pluginkit/Compression.h"
#include "pluginkit/EncodedText.h"
#include "pluginkit/InputFile.h"
#include "pluginkit/TextEdits.h"

#include <filesystem>
#include <functional>
#include <string>
#include <string_view>
#include <vector>

namespace Halvern::Formats::Scenes {

/// A file that is text, compressed or not and XML or not, changed in place. Failures are
/// FormatErrors.
class SceneText
{
public:
    explicit SceneText(const std::filesystem::path& path);

    std::filesystem::path Folder() const { return m_file.Path().parent_path(); }
    /// Decided by the first bytes.
    bool IsXml() const { return m_isXml; }
    const std::string& Utf8() const { return m_text.Utf8(); }

    /// Reads the text; positions of what goes wrong become those of the file, or say that they
    /// count in what was packed.
    void Read(const std::function<void(std::string_view text)>& read) const;

    /// Puts the file with these edits of Utf8() in the place of the file.
    void Replace(std::vector<TextEdit> edits);

private:
    InputFile m_file;
    Compression m_compression;
    bool m_isXml = false;
    EncodedText m_text;
};

} // namespace Halvern::Formats::Scenes
