// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "corsync/Plan.h"

#include <QtCore/QList>
#include <QtCore/QString>

namespace Halvern::Cli {

/// What would let an import go on past its conflicts: "nothing was copied; choose with --collisions
/// keep, rename or replace". Only options that settle something are named, and where none does,
/// what a person can do. Requires: there is a conflict.
QString HintFor(const QList<Jobs::Conflict>& conflicts);

} // namespace Halvern::Cli
