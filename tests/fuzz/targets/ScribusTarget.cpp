// SPDX-License-Identifier: Apache-2.0

#include "FormatTrial.h"
#include "Packing.h"
#include "Target.h"

#include "pluginkit/Compression.h"
#include "scribus/ScribusDocument.h"
#include "scribus/ScribusResolver.h"

namespace Halvern::Fuzz {

namespace {

/// Some of the documents are packed.
void Try(std::string_view input)
{
    static Formats::Scribus::ScribusResolver resolver;
    const Format format{.fileName = "main.sla",
                        .resolver = resolver,
                        .open = OpenDocument<Formats::Scribus::ScribusDocument>,
                        .content = UnpackedContent,
                        .unseen = "#"};
    if (Choices(input).OneIn(8))
        TryFormat(format, PluginKit::Compressed(PluginKit::Compression::Gzip, input));
    else
        TryFormat(format, input);
}

const RegisteredTarget Registered("scribus", Try);

} // namespace

} // namespace Halvern::Fuzz
