// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "ReferenceList.h"

#include <string_view>

namespace Halvern::Formats::Scenes {

/// Everything in a Collada document of version 1.3 to 1.5 that may name a file: images, shaders,
/// and elements of other documents. Throws FormatError; positions count in the text.
ReferenceList FindColladaReferences(std::string_view text);

} // namespace Halvern::Formats::Scenes
