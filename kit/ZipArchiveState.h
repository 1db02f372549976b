// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "kit/ZipDirectory.h"
#include "pluginkit/ZipArchive.h"

namespace Halvern::PluginKit {

struct ZipArchive::State
{
    InputFile& file;
    ZipDirectory directory;
};

} // namespace Halvern::PluginKit
