// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "JobFile.h"

#include "corsync/ImportRequest.h"

#include <QtCore/QJsonObject>

namespace Halvern::Jobs {

/// A request as the journal keeps it: names of its members, policies as words.
QJsonObject JsonOf(const ImportRequest& request);
/// How many files have each outcome, by its number.
QJsonObject CountsOf(const JobState& job);

} // namespace Halvern::Jobs
