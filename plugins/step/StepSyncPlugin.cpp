// SPDX-License-Identifier: Apache-2.0

#include "StepResolver.h"

#include "pluginkit/Exports.h"

PLUGINKIT_EXPORT_RESOLVER(Halvern::Formats::Step::StepResolver);
