// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "corsync/Plan.h"

#include <QtCore/QJsonObject>
#include <QtCore/QString>

namespace Halvern::Cli {

/// "1234 bytes, 2026-03-01 14:05:09", in the time of this place.
QString NowText(const Jobs::ConflictSide& side);
/// What was recorded of it, in the same form; "not recorded".
QString ThenText(const Jobs::ConflictSide& side);
/// "the source (1234 bytes, ...; before: 1200 bytes, ...) and the copy (...)".
QString SidesText(const Jobs::Conflict& conflict);
/// Times in UTC; what was recorded only when it was.
QJsonObject JsonOf(const Jobs::ConflictSide& side);

} // namespace Halvern::Cli
