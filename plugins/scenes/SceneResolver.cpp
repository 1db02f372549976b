// SPDX-License-Identifier: Apache-2.0

#include "SceneResolver.h"

#include "ColladaFinder.h"
#include "MaterialXFinder.h"
#include "SceneDocument.h"
#include "VrmlFinder.h"
#include "X3dFinder.h"

#include "KitNames.h"
#include "pluginkit/FormatError.h"
#include "pluginkit/Utf.h"

#include <algorithm>
#include <string>
#include <string_view>

namespace Halvern::Formats::Scenes {

namespace {

ReferenceList RefuseText(std::string_view)
{
    throw FormatError("the document is not XML", 0);
}

std::string LowerCase(std::string text)
{
    std::transform(text.begin(), text.end(), text.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; });
    return text;
}

std::unique_ptr<Document> Open(const std::filesystem::path& file)
{
    const std::string extension = LowerCase(PathToUtf8(file.extension()));
    if (extension == ".dae")
        return std::make_unique<SceneDocument>(file, FindColladaReferences, RefuseText);
    if (extension == ".mtlx")
        return std::make_unique<SceneDocument>(file, FindMaterialXReferences, RefuseText);
    return std::make_unique<SceneDocument>(file, FindX3dReferences, FindVrmlReferences);
}

} // namespace

SceneResolver::SceneResolver() : DocumentResolver(Open) {}

} // namespace Halvern::Formats::Scenes
