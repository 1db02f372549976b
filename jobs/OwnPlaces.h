// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "syncservices/ServicesSettings.h"

namespace Halvern::Jobs {

/// What this library keeps for itself must not be synced. Throws JobError(SettingsRefused) when the
/// database or the base store lies in the cloud cache folder, also through symbolic links. Nothing
/// is made.
void RequireOwnPlaces(const SyncServices::ServicesSettings& settings);

} // namespace Halvern::Jobs
