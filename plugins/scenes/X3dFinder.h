// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "ReferenceList.h"

#include <string_view>

namespace Halvern::Formats::Scenes {

/// Every address in an X3D scene in XML, each of a list on its own. Throws FormatError; positions
/// count in the text.
ReferenceList FindX3dReferences(std::string_view text);

} // namespace Halvern::Formats::Scenes
