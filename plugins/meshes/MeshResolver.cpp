// SPDX-License-Identifier: Apache-2.0

#include "MeshResolver.h"

#include "DirectXDocument.h"
#include "LightWaveDocument.h"
#include "PlyDocument.h"
#include "ThreeDsDocument.h"

#include "KitNames.h"
#include "pluginkit/Utf.h"

#include <algorithm>

namespace Halvern::Formats::Meshes {

namespace {

std::unique_ptr<Document> Open(const std::filesystem::path& file)
{
    std::string extension = PathToUtf8(file.extension());
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; });
    if (extension == ".3ds")
        return std::make_unique<ThreeDsDocument>(file);
    if (extension == ".lwo")
        return std::make_unique<LightWaveDocument>(file);
    if (extension == ".x")
        return std::make_unique<DirectXDocument>(file);
    return std::make_unique<PlyDocument>(file);
}

} // namespace

MeshResolver::MeshResolver() : DocumentResolver(Open) {}

} // namespace Halvern::Formats::Meshes
