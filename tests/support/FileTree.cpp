// SPDX-License-Identifier: Apache-2.0

#include "FileTree.h"

#include <QtCore/QDir>
#include <QtCore/QDirIterator>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QThread>

#include <random>
#include <stdexcept>

namespace Halvern::Test {

namespace {

void Require(bool ok, const QString& what)
{
    if (!ok)
        throw std::runtime_error(what.toStdString());
}

} // namespace

FileTree::FileTree()
{
    Require(m_root.isValid(), m_root.errorString());
}

QString FileTree::Path(const QString& relative) const
{
    return QDir::cleanPath(m_root.path() + u'/' + relative);
}

FileTree& FileTree::File(const QString& relative, const QByteArray& content)
{
    const QString path = Path(relative);
    Require(QDir().mkpath(QFileInfo(path).absolutePath()), path);
    QFile file(path);
    Require(file.open(QFile::WriteOnly | QFile::Truncate), path);
    Require(file.write(content) == content.size(), path);
    return *this;
}

FileTree& FileTree::File(const QString& relative)
{
    return File(relative, relative.toUtf8());
}

FileTree& FileTree::Folder(const QString& relative)
{
    Require(QDir().mkpath(Path(relative)), relative);
    return *this;
}

FileTree& FileTree::Touch(const QString& relative, const QDateTime& time)
{
    QFile file(Path(relative));
    Require(file.open(QFile::ReadWrite | QFile::ExistingOnly), file.fileName());
    Require(file.setFileTime(time, QFileDevice::FileModificationTime), file.fileName());
    return *this;
}

FileTree& FileTree::Remove(const QString& relative)
{
    const QString path = Path(relative);
    if (QFileInfo(path).isDir()) {
        // On Windows a process that has ended holds the folder that it worked in for a moment more.
        bool isRemoved = QDir(path).removeRecursively();
        for (int tries = 0; !isRemoved && tries < 100; ++tries) {
            QThread::msleep(50);
            isRemoved = QDir(path).removeRecursively();
        }
        Require(isRemoved, path);
    } else if (!QFile::remove(path)) {
        // Windows keeps read-only files.
        QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner);
        Require(QFile::remove(path), path);
    }
    return *this;
}

bool FileTree::Exists(const QString& relative) const
{
    return QFileInfo::exists(Path(relative));
}

QByteArray FileTree::Read(const QString& relative) const
{
    QFile file(Path(relative));
    Require(file.open(QFile::ReadOnly), file.fileName());
    return file.readAll();
}

QDateTime FileTree::Modified(const QString& relative) const
{
    return QFileInfo(Path(relative)).lastModified();
}

FileTree::Snapshot FileTree::Contents(const QString& relative) const
{
    Snapshot snapshot;
    const QDir root(Path(relative));
    QDirIterator it(root.path(),
                    QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot,
                    QDirIterator::Subdirectories);
    while (it.hasNext()) {
        const QFileInfo info(it.next());
        const QString name = root.relativeFilePath(info.absoluteFilePath());
        if (!info.isDir() || info.isSymLink()) {
            QFile file(info.filePath());
            Require(file.open(QFile::ReadOnly), file.fileName());
            snapshot.insert(name, file.readAll());
        } else if (QDir(info.filePath())
                       .isEmpty(QDir::AllEntries | QDir::Hidden | QDir::System |
                                QDir::NoDotAndDotDot)) {
            snapshot.insert(name + u'/', {});
        }
    }
    return snapshot;
}

QByteArray PatternBytes(qint64 size, quint32 seed)
{
    std::mt19937 random(seed);
    QByteArray bytes(size, Qt::Uninitialized);
    for (char& byte : bytes)
        byte = static_cast<char>(random() >> 24);
    return bytes;
}

} // namespace Halvern::Test
