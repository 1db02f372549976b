// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QFile>
#include <QtCore/QString>

namespace Halvern::Test {

/// Holds a file of the test, as a program that has it open for writing would.
class FileLock
{
public:
    explicit FileLock(const QString& path);
    ~FileLock();
    FileLock(const FileLock&) = delete;
    FileLock& operator=(const FileLock&) = delete;

private:
    QFile m_file;
    void* m_handle = nullptr;
};

} // namespace Halvern::Test
