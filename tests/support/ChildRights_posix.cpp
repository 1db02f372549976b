// SPDX-License-Identifier: Apache-2.0

#include "ChildRights.h"

#include <csignal>

#include <linux/capability.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <unistd.h>

namespace Halvern::Test {

void GiveOrdinaryRights(QProcess& process)
{
    // What is not in the bounding set is not given back to root by the program's start. A process
    // that is not root cannot take it away, and has none of it.
    process.setChildProcessModifier([] {
        ::prctl(PR_CAPBSET_DROP, CAP_DAC_OVERRIDE, 0, 0, 0);
        ::prctl(PR_CAPBSET_DROP, CAP_DAC_READ_SEARCH, 0, 0, 0);
    });
}

void LimitFileSize(QProcess& process, qint64 bytes)
{
    process.setChildProcessModifier([bytes] {
        const rlimit limit = {rlim_t(bytes), rlim_t(bytes)};
        ::setrlimit(RLIMIT_FSIZE, &limit);
        std::signal(SIGXFSZ, SIG_IGN);
    });
}

void CloseOutput(QProcess& process)
{
    process.setChildProcessModifier([] { ::close(STDOUT_FILENO); });
}

} // namespace Halvern::Test
