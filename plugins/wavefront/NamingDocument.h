// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "NamedFile.h"

#include "KitNames.h"
#include "pluginkit/Document.h"

#include <map>

namespace Halvern::Formats::Wavefront {

/// What object and material files have in common: statements that name files.
class NamingDocument : public Document
{
public:
    std::vector<DocumentLink> Links() const override;
    std::optional<std::string> UnlistedPathOf(const std::string& id) const override;
    void Rewrite(const NewPaths& paths) override;

    /// A file with more of them, or with more text in them, is refused.
    static constexpr std::size_t MaxStatements = 100'000;
    static constexpr std::size_t MaxText = std::size_t(16) * 1024 * 1024;

protected:
    explicit NamingDocument(const std::filesystem::path& path) : m_file(path) {}

    /// Called by the constructors, in the order of the file.
    void Add(std::string id, Statement statement, NameSpan usual);
    /// The names that a statement holds, as far as the files around tell.
    virtual std::vector<NameSpan> SpansOf(const NamingStatement& statement) const = 0;
    /// How a path is written in this kind of statement.
    virtual std::string Written(const NamingStatement& statement, const std::string& path) const;
    /// The edits for those of `paths` that no statement has.
    virtual std::vector<FileEdit> FurtherEdits(const NewPaths& paths) const;

    const InputFile& File() const { return m_file; }
    std::filesystem::path Folder() const { return m_file.Path().parent_path(); }
    const std::vector<NamingStatement>& Statements() const { return m_statements; }

private:
    struct Place
    {
        const NamingStatement* statement;
        NameSpan span;
    };
    std::optional<Place> Find(const std::string& id) const;

    InputFile m_file;
    std::vector<NamingStatement> m_statements;
    /// By their ids.
    std::map<std::string, std::size_t, std::less<>> m_byId;
    std::size_t m_textSize = 0;
};

} // namespace Halvern::Formats::Wavefront
