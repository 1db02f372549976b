// SPDX-License-Identifier: Apache-2.0

#include "FormatTrial.h"
#include "Packing.h"
#include "Target.h"

#include "blender/BlendDocument.h"
#include "blender/BlendResolver.h"
#include "blender/ZstdSeekTable.h"
#include "pluginkit/Compression.h"

namespace Halvern::Fuzz {

namespace {

void Try(std::string_view input)
{
    static Formats::Blender::BlendResolver resolver;
    TryFormat({.fileName = "main.blend",
               .resolver = resolver,
               .open = OpenDocument<Formats::Blender::BlendDocument>,
               .content = UnpackedContent},
              input);
}

using PluginKit::Compression;

/// Frames of a size that depends on the content, with the table that Blender writes after them.
std::string InFrames(std::string_view content, Choices& choices)
{
    const std::size_t frameSize = 64 + choices.Below(4096);
    std::string bytes;
    std::vector<Formats::Blender::ZstdFrame> frames;
    for (std::size_t at = 0; at < content.size(); at += frameSize) {
        const std::string_view part = content.substr(at, frameSize);
        const std::string frame = PluginKit::Compressed(Compression::Zstd, part);
        frames.push_back({frame.size(), part.size()});
        bytes += frame;
    }
    return bytes + Formats::Blender::ZstdSeekTable(frames);
}

/// The input is what is packed: a packed file is seldom hit.
void TryPacked(std::string_view input)
{
    Choices choices(input);
    switch (choices.Below(3)) {
    case 0:
        return Try(PluginKit::Compressed(Compression::Gzip, input));
    case 1:
        return Try(PluginKit::Compressed(Compression::Zstd, input));
    default:
        return Try(InFrames(input, choices));
    }
}

const RegisteredTarget Registered("blender", Try);
const RegisteredTarget RegisteredPacked("blender_packed", TryPacked);

} // namespace

} // namespace Halvern::Fuzz
