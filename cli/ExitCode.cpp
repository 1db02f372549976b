// SPDX-License-Identifier: Apache-2.0

#include "ExitCode.h"

#include <algorithm>

namespace Halvern::Cli {

namespace {

int Rank(ExitCode code)
{
    switch (code) {
    case ExitCode::Complete:
        return 0;
    case ExitCode::MissingLinks:
        return 1;
    case ExitCode::Locked:
        return 2;
    case ExitCode::Failed:
        return 3;
    case ExitCode::PluginOrDatabase:
        return 4;
    case ExitCode::Collisions:
        return 5;
    case ExitCode::Cancelled:
        return 6;
    case ExitCode::SourceMissing:
        return 7;
    case ExitCode::Usage:
        return 8;
    }
    return 0;
}

} // namespace

ExitCode MostSerious(const QList<ExitCode>& codes)
{
    const auto worst = std::max_element(codes.begin(), codes.end(),
                                        [](ExitCode a, ExitCode b) { return Rank(a) < Rank(b); });
    return worst == codes.end() ? ExitCode::Complete : *worst;
}

} // namespace Halvern::Cli
