// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "kit/PlatformFile.h"
#include "pluginkit/InputFile.h"

namespace Halvern::PluginKit {

struct InputFile::State
{
    Platform::Handle handle = Platform::NoHandle;
    /// The file's state when it was opened.
    FileStamp stamp;
};

} // namespace Halvern::PluginKit
