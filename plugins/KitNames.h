// SPDX-License-Identifier: Apache-2.0

#pragma once

namespace Halvern::PluginKit {}

namespace Halvern::Formats {

/// In the formats, names of the kit stand as they are: what belongs to a format has the format's
/// own namespace.
using namespace PluginKit;

} // namespace Halvern::Formats
