// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "syncplugin/FileLinkInfo.h"
#include "syncplugin/IPluginLogger.h"

namespace Halvern::SyncPlugin {

/// What a resolver may ask of the host during a call.
class IFileLinkResolverContext
{
public:
    virtual ~IFileLinkResolverContext() = default;
    /// Owned by the context.
    virtual IPluginLogger* GetLogger() = 0;
};

/// Reads the links out of files of one format and rewrites them. The host calls it from the thread
/// that runs the job, never twice at once within one job. Exceptions must not leave it; a failure
/// is a false result, with its reason written to the context's logger.
/// DO NOT CHANGE THE ORDER: it is the order of virtual slots.
class IFileLinkResolver
{
public:
    virtual ~IFileLinkResolver() = default;

    /// Reports every link that `file`, the absolute path of an existing file, holds.
    /// On true `*links` is an array of `*count` records made with `new[]`, which the host frees
    /// with `delete[]`; with no links the count is 0 and the array may be null. On false the host
    /// frees nothing. The file is never changed.
    [[nodiscard]] virtual bool GetFileLinks(const WideChar* file, FileLinkInfo** links, int* count,
                                            IFileLinkResolverContext* context) = 0;

    /// Rewrites, inside `file`, each link named by `referenceId` so that it points at `path`.
    /// The array belongs to the host and is valid during the call only. True when every link given
    /// now stands in the file.
    [[nodiscard]] virtual bool RepathFileLinks(const WideChar* file, const FileLinkInfo* links,
                                               int count, IFileLinkResolverContext* context) = 0;
};

/// Made by the export "CreateFileLinkResolverFactory"; lives for one creation.
class IFileLinkResolverFactory
{
public:
    virtual ~IFileLinkResolverFactory() = default;
    /// A new object, owned by the host from then on, or null.
    [[nodiscard]] virtual IFileLinkResolver* CreateFileLinkResolver() = 0;
};

} // namespace Halvern::SyncPlugin
