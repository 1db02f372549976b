// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "pluginkit/InputFile.h"

struct zip;

namespace Halvern::PluginKit {

/// Opens the archive in `file` for reading. Throws FormatError. The archive is closed with
/// zip_discard, while the file lives.
zip* OpenZip(const InputFile& file);

} // namespace Halvern::PluginKit
