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

/// A file of KiCad, or of its simulator, with the files that it names and those that it finds by
/// name. What is wrong with the file is a FormatError of the constructor.
class KicadDocument : public Document
{
public:
    explicit KicadDocument(const std::filesystem::path& path);

    std::vector<DocumentLink> Links() const override { return m_links; }
    /// A model's substitutes are looked for where the model is, which a copy knows only once it is
    /// rewritten; a companion may be missing beside a copy; and what names a file only where it is
    /// there leads nowhere beside a copy.
    std::optional<std::string> UnlistedPathOf(const std::string& id) const override;
    std::optional<std::string> ObstacleTo(const std::string& id,
                                          const std::string& path) const override;
    /// A model goes with its substitutes or not at all.
    void Rewrite(const NewPaths& paths) override;

private:
    /// What others, which are found by its name, come with: a model or a library.
    struct Main
    {
        std::string id;
        std::string path;
    };

    void AddStored(StoredPath stored);
    void AddMain(StoredPath& stored, const std::string& path, bool isThere,
                 const std::vector<std::string>& others);
    std::string TextFor(const StoredPath& stored, const std::string& path);
    void RequireNamesFit(const NewPaths& paths) const;

    InputFile m_file;
    mutable CompanionPlaces m_places;
    PathsOfFile m_paths;
    std::vector<StoredPath> m_stored;
    std::vector<DocumentLink> m_links;
    /// By what the ids of the set begin with.
    std::unordered_map<std::string, Main> m_mains;
    /// The paths of those that lead nowhere and may be none, by their ids.
    std::unordered_map<std::string, std::string> m_unlisted;
};

} // namespace Halvern::Formats::Kicad
