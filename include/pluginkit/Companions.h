// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "syncplugin/ReferenceIds.h"

namespace Halvern::PluginKit {

using SyncPlugin::CompanionId;
using SyncPlugin::CompanionMark;
using SyncPlugin::SetMark;
using SyncPlugin::SetMemberId;

} // namespace Halvern::PluginKit
