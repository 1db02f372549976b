// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "Companions.h"
#include "StoredPath.h"

#include "KitNames.h"
#include "pluginkit/Document.h"
#include "pluginkit/InputFile.h"

#include <filesystem>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

namespace Halvern::Formats::Kicad {

/// A project, a schematic or a board of KiCad with the files that it names and those that it finds
/// by name. What is wrong with the file is a FormatError of the constructor.
class KicadDocument : public Document
{
public:
    explicit KicadDocument(const std::filesystem::path& path);

    std::vector<DocumentLink> Links() const override { return m_links; }
    /// A model's substitutes are looked for where the model is, which a copy knows only once it is
    /// rewritten; and a companion may be missing beside a copy.
    std::optional<std::string> UnlistedPathOf(const std::string& id) const override;
    std::optional<std::string> ObstacleTo(const std::string& id,
                                          const std::string& path) const override;
    /// A model goes with its substitutes or not at all.
    void Rewrite(const NewPaths& paths) override;

private:
    void AddStored(StoredPath stored);
    void RequireNamesFit(const NewPaths& paths) const;

    InputFile m_file;
    mutable CompanionPlaces m_places;
    PathsOfFile m_paths;
    bool m_isProject;
    std::vector<StoredPath> m_stored;
    std::vector<DocumentLink> m_links;
    /// The paths of models that can have substitutes, by their ids.
    std::unordered_map<std::string, std::string> m_models;
};

} // namespace Halvern::Formats::Kicad
