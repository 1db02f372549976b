// SPDX-License-Identifier: Apache-2.0

#include "WavefrontResolver.h"

#include "pluginkit/Exports.h"

PLUGINKIT_EXPORT_RESOLVER(Halvern::Formats::Wavefront::WavefrontResolver);
