// SPDX-License-Identifier: Apache-2.0

#include "WavefrontResolver.h"

#include "MtlDocument.h"
#include "ObjDocument.h"

#include "KitNames.h"
#include "pluginkit/Utf.h"

#include <algorithm>

namespace Halvern::Formats::Wavefront {

namespace {

std::unique_ptr<Document> Open(const std::filesystem::path& file)
{
    std::string extension = PathToUtf8(file.extension());
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; });
    if (extension == ".mtl")
        return std::make_unique<MtlDocument>(file);
    return std::make_unique<ObjDocument>(file);
}

} // namespace

WavefrontResolver::WavefrontResolver() : DocumentResolver(Open) {}

} // namespace Halvern::Formats::Wavefront
