// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "pluginkit/Document.h"

#include "syncplugin/IFileLinkResolver.h"

#include <filesystem>
#include <memory>
#include <new>

namespace Halvern::PluginKit {

/// The resolver of a format, given a way to read its files.
class DocumentResolver : public SyncPlugin::IFileLinkResolver
{
public:
    /// Reads a file, or throws a FormatError.
    using OpenDocument = std::unique_ptr<Document> (*)(const std::filesystem::path& file);

    explicit DocumentResolver(OpenDocument open) : m_open(open) {}

    bool GetFileLinks(const SyncPlugin::WideChar* file, SyncPlugin::FileLinkInfo** links,
                      int* count, SyncPlugin::IFileLinkResolverContext* context) override;
    /// All links or none: with one that is not in the file, or cannot be written, the file stays
    /// as it is. Links that say nothing (see Document::ObstacleTo) hinder no other: when a file
    /// that is found by its name has not the wanted place, the others are rewritten, and the result
    /// is false. A file whose links all have the wanted paths is not written; a leading "./" makes
    /// no difference.
    bool RepathFileLinks(const SyncPlugin::WideChar* file, const SyncPlugin::FileLinkInfo* links,
                         int count, SyncPlugin::IFileLinkResolverContext* context) override;

private:
    void ReadLinks(const SyncPlugin::WideChar* file, SyncPlugin::FileLinkInfo** links,
                   int* count) const;
    void RewriteLinks(const SyncPlugin::WideChar* file, const SyncPlugin::FileLinkInfo* links,
                      int count) const;

    OpenDocument m_open;
};

/// What a format's plug-in library hands out; `Resolver` is made without arguments.
template <typename Resolver>
class ResolverFactory : public SyncPlugin::IFileLinkResolverFactory
{
public:
    SyncPlugin::IFileLinkResolver* CreateFileLinkResolver() override
    {
        return new (std::nothrow) Resolver;
    }
};

} // namespace Halvern::PluginKit
