// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "LinkFinder.h"

#include "KitNames.h"
#include "pluginkit/Document.h"
#include "pluginkit/ZipArchive.h"

#include <filesystem>
#include <string>
#include <vector>

namespace Halvern::Formats::Freecad {

/// A FreeCAD document with the links that it holds. What is wrong with the file is a FormatError of
/// the constructor.
class FreecadDocument : public Document
{
public:
    explicit FreecadDocument(const std::filesystem::path& path);

    std::vector<DocumentLink> Links() const override;
    void Rewrite(const NewPaths& paths) override;

private:
    /// One of the archive's XML files.
    struct Part
    {
        std::string name;
        std::string xml;
        std::vector<FoundLink> links;
    };

    void AddPart(const std::string& name, const std::string& idStart);
    std::string TextOf(const std::string& path, PathKind kind) const;
    std::string Edited(const Part& part, const NewPaths& paths) const;

    InputFile m_file;
    ZipArchive m_archive;
    std::vector<Part> m_parts;
};

} // namespace Halvern::Formats::Freecad
