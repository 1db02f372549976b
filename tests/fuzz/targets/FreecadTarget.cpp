// SPDX-License-Identifier: Apache-2.0

#include "FormatTrial.h"
#include "Packing.h"
#include "Target.h"

#include "freecad/FreecadDocument.h"
#include "freecad/FreecadResolver.h"

namespace Halvern::Fuzz {

namespace {

void Try(std::string_view input)
{
    static Formats::Freecad::FreecadResolver resolver;
    TryFormat({.fileName = "main.FCStd",
               .resolver = resolver,
               .open = OpenDocument<Formats::Freecad::FreecadDocument>,
               .content = ZipContent,
               .unseen = "#"},
              input);
}

/// An archive is seldom hit. Here the input is its Document.xml and, after a zero, its
/// GuiDocument.xml.
void TryXml(std::string_view input)
{
    Choices choices(input);
    const std::size_t zero = input.find('\0');
    std::vector<PackedEntry> entries{
        {"Document.xml", input.substr(0, zero), choices.OneIn(2)},
        {"thumbnails/Thumbnail.png", "PNG", false},
    };
    if (zero != std::string_view::npos)
        entries.push_back({"GuiDocument.xml", input.substr(zero + 1), choices.OneIn(2)});
    Try(ZipOf(entries));
}

const RegisteredTarget Registered("freecad", Try);
const RegisteredTarget RegisteredXml("freecad_xml", TryXml);

} // namespace

} // namespace Halvern::Fuzz
