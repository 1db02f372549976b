// SPDX-License-Identifier: Apache-2.0

#include "FileLock.h"

#include <QtCore/QDir>

#include <gtest/gtest.h>

#include <windows.h>

namespace Halvern::Test {

FileLock::FileLock(const QString& path)
    : m_handle(
          ::CreateFileW(reinterpret_cast<const wchar_t*>(QDir::toNativeSeparators(path).utf16()),
                        GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                        FILE_ATTRIBUTE_NORMAL, nullptr))
{
    EXPECT_NE(m_handle, INVALID_HANDLE_VALUE);
}

FileLock::~FileLock()
{
    ::CloseHandle(m_handle);
}

} // namespace Halvern::Test
