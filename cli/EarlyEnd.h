// SPDX-License-Identifier: Apache-2.0

#pragma once

namespace Halvern::Cli {

/// While it lives, the command is at work: who ends the process meanwhile by `exit`, as a plug-in
/// may, ends it with ExitCode::PluginOrDatabase and a line that says so, and not with a code of its
/// own.
class EarlyEnd
{
public:
    EarlyEnd();
    ~EarlyEnd();
    EarlyEnd(const EarlyEnd&) = delete;
    EarlyEnd& operator=(const EarlyEnd&) = delete;
};

} // namespace Halvern::Cli
