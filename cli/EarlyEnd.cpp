// SPDX-License-Identifier: Apache-2.0

#include "EarlyEnd.h"

#include "ExitCode.h"
#include "Streams.h"

#include <atomic>
#include <cstdlib>
#include <mutex>

namespace Halvern::Cli {

namespace {

std::atomic<bool> isAtWork{false};

void OnExit()
{
    if (!isAtWork)
        return;
    WriteMessages("corsync: a plug-in ended the program before the work was done\n");
    std::_Exit(int(ExitCode::PluginOrDatabase));
}

} // namespace

EarlyEnd::EarlyEnd()
{
    static std::once_flag once;
    std::call_once(once, [] { std::atexit(OnExit); });
    isAtWork = true;
}

EarlyEnd::~EarlyEnd()
{
    isAtWork = false;
}

} // namespace Halvern::Cli
