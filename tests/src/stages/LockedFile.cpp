// SPDX-License-Identifier: Apache-2.0

#include "LockedFile.h"

#include "ProcessStart.h"

#include <stdexcept>

namespace Halvern::Test {

LockedFile::LockedFile(const QString& path, const QString& kind)
{
    StartProcess(m_process, QStringLiteral(LOCK_HOLDER), {kind, path});
    // It says so on its output once it holds the lock.
    if (!m_process.waitForReadyRead(30'000))
        throw std::runtime_error("the file could not be locked: " +
                                 m_process.readAllStandardError().toStdString());
}

LockedFile::~LockedFile()
{
    m_process.closeWriteChannel();
    m_process.waitForFinished(30'000);
}

} // namespace Halvern::Test
