// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "KitNames.h"
#include "pluginkit/DocumentResolver.h"

namespace Halvern::Formats::OpenScad {

/// Reads and rewrites the names of files in OpenSCAD models.
class OpenScadResolver : public DocumentResolver
{
public:
    OpenScadResolver();
};

} // namespace Halvern::Formats::OpenScad
