// SPDX-License-Identifier: Apache-2.0

#include "SolveSpaceResolver.h"

#include "pluginkit/Exports.h"

PLUGINKIT_EXPORT_RESOLVER(Halvern::Formats::SolveSpace::SolveSpaceResolver);
