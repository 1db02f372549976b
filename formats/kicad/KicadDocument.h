#pragma once

#include "StoredPath.h"

#include "common/Document.h"
#include "common/InputFile.h"

#include <filesystem>
#include <optional>
#include <string>
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
    /// rewritten.
    std::optional<std::string> UnlistedPathOf(const std::string& id) const override;
    /// Links by name cannot be rewritten, and a model goes with its substitutes or not at all.
    void Rewrite(const NewPaths& paths) override;

private:
    void AddStored(StoredPath stored);
    void RequireNamesFit(const NewPaths& paths) const;

    InputFile m_file;
    PathsOfFile m_paths;
    bool m_isProject;
    std::vector<StoredPath> m_stored;
    std::vector<DocumentLink> m_links;
};

} // namespace Halvern::Formats::Kicad
