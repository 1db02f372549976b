// SPDX-License-Identifier: Apache-2.0

#include "SmallStack.h"

#include <gtest/gtest.h>

#include <pthread.h>

namespace Halvern::Test {

namespace {

void* Run(void* work)
{
    (*static_cast<const std::function<void()>*>(work))();
    return nullptr;
}

} // namespace

void OnASmallStack(const std::function<void()>& work)
{
    pthread_attr_t attributes;
    ASSERT_EQ(pthread_attr_init(&attributes), 0);
    ASSERT_EQ(pthread_attr_setstacksize(&attributes, SmallStackBytes), 0);
    pthread_t thread;
    ASSERT_EQ(pthread_create(&thread, &attributes, Run, const_cast<std::function<void()>*>(&work)),
              0);
    EXPECT_EQ(pthread_join(thread, nullptr), 0);
    EXPECT_EQ(pthread_attr_destroy(&attributes), 0);
}

} // namespace Halvern::Test
