// SPDX-License-Identifier: Apache-2.0

#include "SmallStack.h"

#include <gtest/gtest.h>

#include <process.h>
#include <windows.h>

namespace Halvern::Test {

namespace {

unsigned __stdcall Run(void* work)
{
    (*static_cast<const std::function<void()>*>(work))();
    return 0;
}

} // namespace

void OnASmallStack(const std::function<void()>& work)
{
    // Without the flag the size is what is committed at the start, and the program's own is kept
    // in reserve.
    const auto thread = reinterpret_cast<HANDLE>(_beginthreadex(
        nullptr, unsigned(SmallStackBytes), Run, const_cast<std::function<void()>*>(&work),
        STACK_SIZE_PARAM_IS_A_RESERVATION, nullptr));
    ASSERT_NE(thread, nullptr);
    EXPECT_EQ(WaitForSingleObject(thread, INFINITE), WAIT_OBJECT_0);
    EXPECT_TRUE(CloseHandle(thread));
}

} // namespace Halvern::Test
