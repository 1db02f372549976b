// SPDX-License-Identifier: Apache-2.0

#include "SvgResolver.h"

#include "SvgDocument.h"

#include "KitNames.h"
#include "pluginkit/Utf.h"

#include <algorithm>

namespace Halvern::Formats::Svg {

namespace {

bool IsStyleSheet(const std::filesystem::path& file)
{
    std::string extension = PathToUtf8(file.extension());
    std::transform(extension.begin(), extension.end(), extension.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; });
    return extension == ".css";
}

std::unique_ptr<Document> Open(const std::filesystem::path& file)
{
    return std::make_unique<SvgDocument>(file, IsStyleSheet(file));
}

} // namespace

SvgResolver::SvgResolver() : DocumentResolver(Open) {}

} // namespace Halvern::Formats::Svg
