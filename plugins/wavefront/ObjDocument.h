// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "NamingDocument.h"

namespace Halvern::Formats::Wavefront {

/// An object file (.obj) with the material libraries that it uses: those of its "mtllib"
/// statements, and one that has the file's own name, which readers take without being told.
class ObjDocument : public NamingDocument
{
public:
    explicit ObjDocument(const std::filesystem::path& path);

    std::vector<DocumentLink> Links() const override;
    std::optional<std::string> UnlistedPathOf(const std::string& id) const override;

protected:
    std::vector<NameSpan> SpansOf(const NamingStatement& statement) const override;
    /// A library that cannot go by the file's name any more gets a statement.
    std::vector<FileEdit> FurtherEdits(const NewPaths& paths) const override;

private:
    std::string CompanionPath() const;
    /// Whether a statement names the path, once the changes are made.
    bool IsNamed(const std::string& path, const NewPaths& changes) const;
    FileEdit NewStatement(const std::string& path) const;
};

} // namespace Halvern::Formats::Wavefront
