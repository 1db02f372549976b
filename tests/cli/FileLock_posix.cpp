// SPDX-License-Identifier: Apache-2.0

#include "FileLock.h"

#include <gtest/gtest.h>

#include <sys/file.h>

namespace Halvern::Test {

FileLock::FileLock(const QString& path) : m_file(path)
{
    EXPECT_TRUE(m_file.open(QFile::ReadWrite | QFile::ExistingOnly));
    EXPECT_EQ(flock(m_file.handle(), LOCK_EX | LOCK_NB), 0);
}

FileLock::~FileLock() = default;

} // namespace Halvern::Test
