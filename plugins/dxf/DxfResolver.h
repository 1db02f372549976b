// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "DxfDocument.h"

#include "KitNames.h"
#include "pluginkit/DocumentResolver.h"

namespace Halvern::Formats::Dxf {

/// Reads and rewrites the names of files in DXF drawings, text and binary.
using DxfResolver = DocumentResolverFor<DxfDocument>;

} // namespace Halvern::Formats::Dxf
