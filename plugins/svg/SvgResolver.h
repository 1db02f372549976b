// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "KitNames.h"
#include "pluginkit/DocumentResolver.h"

namespace Halvern::Formats::Svg {

/// Reads and rewrites the references of SVG drawings (.svg, .svgz) and of the style sheets (.css)
/// that they use.
class SvgResolver : public DocumentResolver
{
public:
    SvgResolver();
};

} // namespace Halvern::Formats::Svg
