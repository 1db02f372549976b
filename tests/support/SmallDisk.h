// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QString>

namespace Halvern::Test {

/// While it lives, a folder on which large files do not fit: a file system of that size mounted
/// there, or, where this process may not mount, a limit on the size of the files that the process
/// writes. Either way the system breaks off the write of a larger file.
class SmallDisk
{
public:
    SmallDisk(const QString& folder, qint64 size);
    ~SmallDisk();
    SmallDisk(const SmallDisk&) = delete;
    SmallDisk& operator=(const SmallDisk&) = delete;

private:
    QString m_folder;
    bool m_mounted = false;
    quint64 m_earlierLimit = 0;
};

} // namespace Halvern::Test
