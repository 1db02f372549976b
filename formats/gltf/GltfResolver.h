#pragma once

#include "syncplugin/IFileLinkResolver.h"

namespace Halvern::Formats::Gltf {

/// Reads and rewrites the uris of glTF 2.0 files, plain (.gltf) and binary (.glb).
///
/// A link's reference id is the JSON pointer of its string. Rewriting changes the bytes of those
/// strings and, in a binary file, the padding behind the JSON and two lengths; nothing else.
class GltfResolver : public SyncPlugin::IFileLinkResolver
{
public:
    bool GetFileLinks(const SyncPlugin::WideChar* file, SyncPlugin::FileLinkInfo** links,
                      int* count, SyncPlugin::IFileLinkResolverContext* context) override;
    /// All links or none: with one that is not in the file, or cannot be written, the file stays
    /// as it is. A file whose links all have the wanted paths is not written.
    bool RepathFileLinks(const SyncPlugin::WideChar* file, const SyncPlugin::FileLinkInfo* links,
                         int count, SyncPlugin::IFileLinkResolverContext* context) override;
};

} // namespace Halvern::Formats::Gltf
