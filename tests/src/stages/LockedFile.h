// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QProcess>
#include <QtCore/QString>

namespace Halvern::Test {

using namespace Qt::StringLiterals;

/// While it lives, another process holds a lock on a file. `kind` is "flock" or "fcntl"; on Windows
/// the file is open there without sharing.
class LockedFile
{
public:
    explicit LockedFile(const QString& path, const QString& kind = u"flock"_s);
    ~LockedFile();
    LockedFile(const LockedFile&) = delete;
    LockedFile& operator=(const LockedFile&) = delete;

private:
    QProcess m_process;
};

} // namespace Halvern::Test
