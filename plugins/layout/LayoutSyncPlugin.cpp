// SPDX-License-Identifier: Apache-2.0

#include "SourceTreeLayout.h"

#include "pluginkit/Exports.h"

PLUGINKIT_EXPORT_LAYOUT(Halvern::Formats::Layout::SourceTreeLayout);
