// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "ReferenceList.h"

#include <string_view>

namespace Halvern::Formats::Scenes {

/// Every address in a scene of VRML 1.0 or 2.0 or of X3D in the classic encoding, each of a list on
/// its own. Throws FormatError; positions count
/// in the text.
ReferenceList FindVrmlReferences(std::string_view text);

} // namespace Halvern::Formats::Scenes
