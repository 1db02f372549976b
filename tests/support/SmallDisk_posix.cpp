// SPDX-License-Identifier: Apache-2.0

#include "SmallDisk.h"

#include <QtCore/QFile>

#include <csignal>
#include <stdexcept>

#include <sys/mount.h>
#include <sys/resource.h>

namespace Halvern::Test {

SmallDisk::SmallDisk(const QString& folder, qint64 size) : m_folder(folder)
{
    const QByteArray options = "size=" + QByteArray::number(size);
    m_mounted = ::mount("tmpfs", QFile::encodeName(folder).constData(), "tmpfs", 0,
                        options.constData()) == 0;
    if (m_mounted)
        return;
    rlimit limit = {};
    ::getrlimit(RLIMIT_FSIZE, &limit);
    m_earlierLimit = limit.rlim_cur;
    limit.rlim_cur = rlim_t(size);
    std::signal(SIGXFSZ, SIG_IGN);
    if (::setrlimit(RLIMIT_FSIZE, &limit) != 0)
        throw std::runtime_error("neither a mount nor a limit on file sizes is possible");
}

SmallDisk::~SmallDisk()
{
    if (m_mounted) {
        ::umount2(QFile::encodeName(m_folder).constData(), MNT_DETACH);
        return;
    }
    rlimit limit = {};
    ::getrlimit(RLIMIT_FSIZE, &limit);
    limit.rlim_cur = m_earlierLimit;
    ::setrlimit(RLIMIT_FSIZE, &limit);
}

} // namespace Halvern::Test
