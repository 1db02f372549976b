// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "Dna.h"
#include "StoredPath.h"

#include <filesystem>

namespace Halvern::Formats::Blender {

/// What a .blend file says of other files.
struct BlendLinks
{
    MachineForm form;
    /// In the order of the file.
    std::vector<std::unique_ptr<StoredPath>> paths;
};

/// Goes through the file twice: the description of its structs, without which nothing can be
/// understood, lies at the end. Memory grows with the links found and with nothing else.
BlendLinks FindLinks(const InputFile& file);

} // namespace Halvern::Formats::Blender
