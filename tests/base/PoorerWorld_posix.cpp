// SPDX-License-Identifier: Apache-2.0

#include "PoorerWorld.h"

#include <QtCore/QtGlobal>

#include <gtest/gtest.h>

#include <cstddef>

#include <linux/filter.h>
#include <linux/seccomp.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#ifdef CORSYNC_COVERAGE
extern "C" void __gcov_dump();
#endif

namespace Halvern::Test {

namespace {

constexpr int NoFilter = 99;

bool Refuse(const std::vector<Refusal>& refusals)
{
    std::vector<sock_filter> filter;
    const auto load = [&](size_t offset) {
        filter.push_back(BPF_STMT(BPF_LD | BPF_W | BPF_ABS, static_cast<unsigned int>(offset)));
    };
    for (const Refusal& refusal : refusals) {
        load(offsetof(seccomp_data, nr));
        filter.push_back(
            BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, static_cast<unsigned int>(refusal.call), 0, 4));
        load(offsetof(seccomp_data, args) + sizeof(quint64) * size_t(refusal.argument));
        filter.push_back(BPF_STMT(BPF_ALU | BPF_AND | BPF_K, refusal.mask));
        filter.push_back(BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, refusal.mask, 0, 1));
        filter.push_back(BPF_STMT(BPF_RET | BPF_K,
                                  SECCOMP_RET_ERRNO | static_cast<unsigned int>(refusal.error)));
    }
    filter.push_back(BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW));
    const sock_fprog program{static_cast<unsigned short>(filter.size()), filter.data()};
    return ::prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 &&
           ::prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program) == 0;
}

/// Ends without what a test program does at its end, but with the counters of what was run.
[[noreturn]] void End(int code)
{
#ifdef CORSYNC_COVERAGE
    __gcov_dump();
#endif
    ::_exit(code);
}

} // namespace

int InAPoorerWorld(const std::vector<Refusal>& refusals, const std::function<bool()>& work)
{
    const pid_t child = ::fork();
    if (child == 0) {
        if (!Refuse(refusals))
            ::_exit(NoFilter);
        End(work() ? Good : Bad);
    }
    int status = 0;
    EXPECT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFEXITED(status));
    EXPECT_NE(WEXITSTATUS(status), NoFilter) << "the kernel does not filter system calls";
    return WEXITSTATUS(status);
}

} // namespace Halvern::Test
