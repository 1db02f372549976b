// SPDX-License-Identifier: Apache-2.0

#include "SceneResolver.h"

#include "pluginkit/Exports.h"

PLUGINKIT_EXPORT_RESOLVER(Halvern::Formats::Scenes::SceneResolver);
