// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "StoredText.h"

#include "KitNames.h"
#include "pluginkit/Document.h"

#include <memory>

namespace Halvern::Formats::Blender {

/// What one place of a file names: a single file, or a set of files whose names hang together.
class StoredPath
{
public:
    virtual ~StoredPath() = default;

    /// How many links AddLinks adds.
    virtual std::size_t LinkCount() const = 0;
    virtual void AddLinks(std::vector<DocumentLink>& links) const = 0;
    /// For an id that AddLinks did not give, since a file of the set is not there.
    virtual std::optional<std::string> UnlistedPathOf(const std::string& /*id*/) const
    {
        return std::nullopt;
    }
    /// Throws a FormatError that names two files when this place could not name all of them under
    /// the wanted paths. Requires: `wanted` holds all paths, those that stay included.
    virtual void RequireTogether(const NewPaths& /*wanted*/) const {}
    /// `paths` may hold links of other places, too.
    virtual void AddEdits(const NewPaths& paths, const MachineForm& form,
                          std::vector<FileEdit>& edits) const = 0;
};

/// A text that names one file.
class SinglePath : public StoredPath
{
public:
    SinglePath(std::string id, StoredText text) : m_id(std::move(id)), m_text(std::move(text)) {}

    std::size_t LinkCount() const override { return 1; }
    void AddLinks(std::vector<DocumentLink>& links) const override;
    void AddEdits(const NewPaths& paths, const MachineForm& form,
                  std::vector<FileEdit>& edits) const override;

private:
    std::string m_id;
    StoredText m_text;
};

/// A folder and the names of files in it: a strip of the video editor. The files can get other
/// names, but they have one folder.
class FolderPath : public StoredPath
{
public:
    FolderPath(const std::string& id, StoredText folder, std::vector<StoredText> names);

    std::size_t LinkCount() const override { return m_names.size(); }
    void AddLinks(std::vector<DocumentLink>& links) const override;
    void RequireTogether(const NewPaths& wanted) const override;
    void AddEdits(const NewPaths& paths, const MachineForm& form,
                  std::vector<FileEdit>& edits) const override;

private:
    std::string PathOf(std::size_t index) const;

    StoredText m_folder;
    std::vector<StoredText> m_names;
    std::vector<std::string> m_ids;
};

} // namespace Halvern::Formats::Blender
