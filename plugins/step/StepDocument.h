// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "ExternalFiles.h"

#include "KitNames.h"
#include "pluginkit/Document.h"
#include "pluginkit/FileEdits.h"

#include <filesystem>
#include <unordered_map>

namespace Halvern::Formats::Step {

/// An exchange file with the files that it refers to.
///
/// A reference has up to three strings. The one that readers follow is the link; those that say the
/// same change with it, the others (a document's number, a folder) stay. Ids: "#85" for the first
/// string of instance 85, "#85 document" and "#85 source" for its others.
class StepDocument : public Document
{
public:
    explicit StepDocument(const std::filesystem::path& path);

    std::vector<DocumentLink> Links() const override;
    std::optional<std::string> UnlistedPathOf(const std::string& id) const override;
    void Rewrite(const NewPaths& paths) override;

private:
    struct Name
    {
        std::string id;
        const StepString* string;
    };
    std::filesystem::path Folder() const { return m_file.Path().parent_path(); }
    /// Those that are not empty, in the order in which readers try them.
    std::vector<Name> NamesOf(const ExternalFile& file) const;
    std::optional<Name> LinkOf(const ExternalFile& file) const;
    std::string PathOf(const StepString& name) const;
    void AddEdits(const ExternalFile& file, const NewPaths& paths,
                  std::vector<FileEdit>& edits) const;

    InputFile m_file;
    std::vector<ExternalFile> m_files;
    /// Places in m_files.
    std::unordered_map<std::uint64_t, std::size_t> m_byInstance;
};

} // namespace Halvern::Formats::Step
