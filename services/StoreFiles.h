// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "base/FileHandle.h"
#include "base/FileResult.h"
#include "base/FileStatus.h"
#include "base/HeldFile.h"

#include <QtCore/QByteArray>
#include <QtCore/QString>

namespace Halvern::SyncServices {

// Files as the base store reads and writes them. Symbolic links are never followed.

/// An open file, closed at the end of its life.
class OpenFile
{
public:
    OpenFile() = default;
    ~OpenFile() { Close(); }
    OpenFile(const OpenFile&) = delete;
    OpenFile& operator=(const OpenFile&) = delete;

    /// For reading; a symbolic link and what is no file are failures.
    Base::FileResult Open(const QString& path);
    Base::FileStatus Status() const { return Base::ReadFileStatus(handle); }
    qint64 Size() const { return static_cast<qint64>(Status().size); }
    void Close();

    Base::Handle handle = Base::NoHandle;
};

/// A file in the making, under a name of its own. It is gone at the end of the scope unless it was
/// moved.
class PartFile
{
public:
    explicit PartFile(const QString& folder);
    ~PartFile();
    PartFile(const PartFile&) = delete;
    PartFile& operator=(const PartFile&) = delete;

    Base::FileResult Make();
    Base::FileResult Flush() const { return Base::FlushToDisk(file.handle); }
    /// Closes the file and gives it its name, in the place of what has that name. With `lasting`
    /// the name is on the disk afterwards, too.
    Base::FileResult MoveTo(const QString& path, bool lasting);

    OpenFile file;

private:
    QString m_path;
    bool m_made = false;
};

/// The hash that `content`, all of it, has.
Base::FileResult HashContent(const OpenFile& content, QByteArray& hash);
/// Copies everything, and answers the hash of what `target` then holds.
Base::FileResult CopyContent(const OpenFile& source, const OpenFile& target, QByteArray& hash);

/// Makes a folder of the store. A symbolic link (Windows: or a junction) is refused, wherever it
/// leads: what is kept must not land somewhere else.
Base::FileResult MakeOwnFolder(const QString& folder);
/// Waits some seconds for another one that holds the file.
Base::FileResult HoldPatiently(Base::HeldFile& held, const QString& file);

/// The hash of a text; as strong as that of contents.
QByteArray HashText(const QByteArray& text);

} // namespace Halvern::SyncServices
