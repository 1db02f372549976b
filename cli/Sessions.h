// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "Options.h"

#include "corsync/Session.h"

#include <memory>

namespace Halvern::Cli {

// Sessions as the command line asks for them. Both throw what Jobs::Session throws.

Jobs::Session OpenSession(const Jobs::Places& places, const CommonOptions& common,
                          Jobs::SessionUse use);
std::unique_ptr<Jobs::Session> OpenTemporarySession(const CommonOptions& common);

} // namespace Halvern::Cli
