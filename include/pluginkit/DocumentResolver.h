// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "pluginkit/Document.h"

#include "syncplugin/IFileLinkResolver.h"

#include <filesystem>
#include <memory>

namespace Halvern::PluginKit {

/// The resolver of a format, given a way to read its files: all that the contract asks of a
/// resolver but the format itself.
///
/// No exception leaves it, whatever a document throws: a failure is a false result and one line to
/// the context's logger (see Boundary.h). Beside the documents it holds no state, so that resolvers
/// may work in several threads at once when their documents can.
class DocumentResolver : public SyncPlugin::IFileLinkResolver
{
public:
    /// Reads a file, or throws a FormatError. Called once for each call of the host; the document
    /// goes when that call ends.
    using OpenDocument = std::unique_ptr<Document> (*)(const std::filesystem::path& file);

    explicit DocumentResolver(OpenDocument open) : m_open(open) {}

    /// Paths go to the host as the document gives them, but for one case: where a name can hold a
    /// ":", a relative path of an existing file that a host would take for an address is made
    /// absolute, if that fits a record. A link whose id or path does not fit a record is a failure.
    bool GetFileLinks(const SyncPlugin::WideChar* file, SyncPlugin::FileLinkInfo** links,
                      int* count, SyncPlugin::IFileLinkResolverContext* context) noexcept override;
    /// All links or none: with one that is not in the file, or cannot be written, the file stays
    /// as it is. Links that say nothing (see Document::ObstacleTo) hinder no other: when a file
    /// that is found by its name has not the wanted place, the others are rewritten, and the result
    /// is false. A file whose links all have the wanted paths is not written; a leading "./" makes
    /// no difference.
    bool RepathFileLinks(const SyncPlugin::WideChar* file, const SyncPlugin::FileLinkInfo* links,
                         int count,
                         SyncPlugin::IFileLinkResolverContext* context) noexcept override;

private:
    void ReadLinks(const SyncPlugin::WideChar* file, SyncPlugin::FileLinkInfo** links,
                   int* count) const;
    void RewriteLinks(const SyncPlugin::WideChar* file, const SyncPlugin::FileLinkInfo* links,
                      int count) const;

    OpenDocument m_open;
};

/// The resolver of a format whose documents are made of a path.
template <typename FormatDocument>
class DocumentResolverFor : public DocumentResolver
{
public:
    DocumentResolverFor()
        : DocumentResolver([](const std::filesystem::path& file) -> std::unique_ptr<Document> {
              return std::make_unique<FormatDocument>(file);
          })
    {}
};

} // namespace Halvern::PluginKit
