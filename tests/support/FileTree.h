// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QDateTime>
#include <QtCore/QMap>
#include <QtCore/QString>
#include <QtCore/QTemporaryDir>

#include <ostream>

namespace Halvern::Test {

/// A temporary folder with a small language for building trees in it:
///
///     FileTree tree;
///     tree.File("src/a.asm", "...").File("src/lib/c.prt").Folder("src/empty");
///     EXPECT_EQ(tree.Contents("cloud"), (FileTree::Snapshot{{"a.asm", "..."}}));
class FileTree
{
public:
    using Snapshot = QMap<QString, QByteArray>;

    FileTree();

    /// The absolute, cleaned path of something in the tree; the root for an empty name.
    QString Path(const QString& relative = {}) const;
    /// Writes a file, making its folders. The default content is the file's own relative path.
    FileTree& File(const QString& relative, const QByteArray& content);
    FileTree& File(const QString& relative);
    FileTree& Folder(const QString& relative);
    /// Sets the last-modified time; whole seconds work on every file system.
    FileTree& Touch(const QString& relative, const QDateTime& time);
    FileTree& Remove(const QString& relative);

    bool Exists(const QString& relative) const;
    QByteArray Read(const QString& relative) const;
    QDateTime Modified(const QString& relative) const;
    /// Every file below a folder with its content, hidden ones included; a folder without entries
    /// stands as "name/" with an empty content.
    Snapshot Contents(const QString& relative = {}) const;

private:
    QTemporaryDir m_root;
};

/// Non-repeating bytes, the same for the same seed and size.
QByteArray PatternBytes(qint64 size, quint32 seed = 1);

} // namespace Halvern::Test

// GoogleTest finds these by argument-dependent lookup.
inline void PrintTo(const QString& text, std::ostream* out)
{
    *out << '"' << text.toStdString() << '"';
}

inline void PrintTo(const QByteArray& bytes, std::ostream* out)
{
    *out << '"' << bytes.toStdString() << '"';
}

inline void PrintTo(const Halvern::Test::FileTree::Snapshot& snapshot, std::ostream* out)
{
    for (auto it = snapshot.cbegin(); it != snapshot.cend(); ++it)
        *out << "\n  " << it.key().toStdString() << ": "
             << it.value().toPercentEncoding(" /").toStdString();
}
