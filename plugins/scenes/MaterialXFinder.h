// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "ReferenceList.h"

#include <string_view>

namespace Halvern::Formats::Scenes {

/// Everything in a MaterialX document that may name a file: values of the type "filename", included
/// documents and sources of implementations. Throws FormatError; positions count
/// in the text.
ReferenceList FindMaterialXReferences(std::string_view text);

} // namespace Halvern::Formats::Scenes
