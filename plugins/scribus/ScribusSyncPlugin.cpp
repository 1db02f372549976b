// SPDX-License-Identifier: Apache-2.0

#include "ScribusResolver.h"

#include "pluginkit/Exports.h"

PLUGINKIT_EXPORT_RESOLVER(Halvern::Formats::Scribus::ScribusResolver);
