// SPDX-License-Identifier: Apache-2.0

#include "FormatTrial.h"
#include "Packing.h"
#include "Target.h"

#include "pluginkit/Compression.h"
#include "svg/SvgDocument.h"
#include "svg/SvgResolver.h"

namespace Halvern::Fuzz {

namespace {

using PluginKit::Document;

template <bool IsStyleSheet>
std::unique_ptr<Document> Open(const std::filesystem::path& file)
{
    return std::make_unique<Formats::Svg::SvgDocument>(file, IsStyleSheet);
}

/// Some of the drawings are packed.
void TryDrawing(std::string_view input)
{
    static Formats::Svg::SvgResolver resolver;
    const Format format{.fileName = "main.svg",
                        .resolver = resolver,
                        .open = Open<false>,
                        .content = UnpackedContent,
                        .unseen = "#\\",
                        .placesOfLink = 2};
    if (Choices(input).OneIn(8))
        TryFormat(format, PluginKit::Compressed(PluginKit::Compression::Gzip, input));
    else
        TryFormat(format, input);
}

void TryStyleSheet(std::string_view input)
{
    static Formats::Svg::SvgResolver resolver;
    TryFormat({.fileName = "main.css",
               .resolver = resolver,
               .open = Open<true>,
               .content = UnpackedContent,
               .unseen = "#\\"},
              input);
}

const RegisteredTarget RegisteredDrawing("svg", TryDrawing);
const RegisteredTarget RegisteredStyleSheet("css", TryStyleSheet);

} // namespace

} // namespace Halvern::Fuzz
