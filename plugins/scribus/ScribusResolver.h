// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "KitNames.h"
#include "pluginkit/DocumentResolver.h"

namespace Halvern::Formats::Scribus {

/// Reads and rewrites the names of files in Scribus documents (.sla, .scd), compressed ones
/// (.gz) included. What else is compressed has no links.
class ScribusResolver : public DocumentResolver
{
public:
    ScribusResolver();
};

} // namespace Halvern::Formats::Scribus
