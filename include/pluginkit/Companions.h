// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "syncplugin/ReferenceIds.h"

namespace Halvern::Formats {

using SyncPlugin::CompanionId;
using SyncPlugin::CompanionMark;
using SyncPlugin::SetMark;
using SyncPlugin::SetMemberId;

} // namespace Halvern::Formats
