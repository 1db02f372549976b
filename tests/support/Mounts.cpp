// SPDX-License-Identifier: Apache-2.0

#include "Mounts.h"

#include <QtCore/QByteArray>
#include <QtCore/QFile>

#include <gtest/gtest.h>

#include <cerrno>
#include <cstring>
#include <utility>

#include <sys/mount.h>

namespace Halvern::Test {

namespace {

bool Check(int result, const QString& folder)
{
    const int failure = errno;
    if (result != 0)
        ADD_FAILURE() << "This test mounts a file system at " << folder.toStdString()
                      << ", which failed (root is needed): " << std::strerror(failure);
    return result == 0;
}

} // namespace

Mount::Mount(Mount&& other) noexcept : m_folder(std::exchange(other.m_folder, QString())) {}

Mount Mount::Small(const QString& folder, int bytes)
{
    Mount mount;
    const QByteArray options = "size=" + QByteArray::number(bytes);
    if (Check(::mount("tmpfs", QFile::encodeName(folder).constData(), "tmpfs", 0,
                      options.constData()),
              folder))
        mount.m_folder = folder;
    return mount;
}

Mount Mount::Bind(const QString& folder, const QString& other)
{
    Mount mount;
    if (Check(::mount(QFile::encodeName(other).constData(), QFile::encodeName(folder).constData(),
                      nullptr, MS_BIND, nullptr),
              folder))
        mount.m_folder = folder;
    return mount;
}

Mount Mount::ReadOnly(const QString& folder)
{
    Mount mount;
    const QByteArray path = QFile::encodeName(folder);
    if (!Check(::mount(path.constData(), path.constData(), nullptr, MS_BIND, nullptr), folder))
        return mount;
    mount.m_folder = folder;
    Check(::mount(nullptr, path.constData(), nullptr, MS_BIND | MS_REMOUNT | MS_RDONLY, nullptr),
          folder);
    return mount;
}

Mount::~Mount()
{
    if (IsMounted())
        Check(::umount2(QFile::encodeName(m_folder).constData(), MNT_DETACH), m_folder);
}

} // namespace Halvern::Test
