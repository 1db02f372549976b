// SPDX-License-Identifier: Apache-2.0

#include "FileStamp.h"

#include <QtCore/QFile>

#include <climits>

#include <sys/stat.h>
#include <unistd.h>

namespace Halvern::Test {

namespace {

QByteArray LinkText(const QByteArray& path)
{
    char text[PATH_MAX];
    const ssize_t length = ::readlink(path.constData(), text, sizeof text);
    return length < 0 ? QByteArray() : QByteArray(text, length);
}

QByteArray Content(const QString& path)
{
    QFile file(path);
    return file.open(QFile::ReadOnly) ? file.readAll() : QByteArray("not to be read");
}

} // namespace

FileStamp StampOf(const QString& path)
{
    const QByteArray name = QFile::encodeName(path);
    struct stat status = {};
    FileStamp stamp;
    if (::lstat(name.constData(), &status) != 0)
        return stamp;
    stamp.nanoseconds = qint64(status.st_mtim.tv_sec) * 1'000'000'000 + status.st_mtim.tv_nsec;
    stamp.index = status.st_ino;
    stamp.mode = status.st_mode & 07777;
    if (S_ISLNK(status.st_mode)) {
        stamp.kind = "link";
        stamp.content = LinkText(name);
    } else if (S_ISDIR(status.st_mode)) {
        stamp.kind = "folder";
    } else {
        stamp.kind = "file";
        stamp.content = S_ISREG(status.st_mode) ? Content(path) : QByteArray("special");
    }
    return stamp;
}

} // namespace Halvern::Test
