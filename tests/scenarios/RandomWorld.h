// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "FileTree.h"

#include <QtCore/QString>
#include <QtCore/QStringList>

#include <random>

namespace Halvern::Test {

/// The same throws for the same seed on every machine.
class Dice
{
public:
    explicit Dice(quint32 seed) : m_random(seed) {}
    int Below(int limit) { return int(m_random() % quint32(limit)); }
    bool Chance(int percent) { return Below(100) < percent; }
    const QString& Pick(const QStringList& from) { return from.at(Below(int(from.size()))); }

private:
    std::mt19937 m_random;
};

/// One import: what is given, where it goes, and how.
struct ImportStep
{
    /// Relative to "work".
    QStringList sources;
    QString to;
    QString collisions;
    QString onConflict;
    bool move = false;
    bool linksOnly = false;
    bool directLinksOnly = false;
    bool selfContained = false;
    bool force = false;
    bool checksum = false;
    bool reread = false;
    bool prune = false;
    /// "*.bak" is excluded.
    bool excludesBackups = false;
    /// Folders, relative to "work", from which alone files may come; empty: no such limit.
    QStringList within;
    /// What is wrong with the test resolver meanwhile, as PluginOrders know it, or "absent".
    QString fault;
    /// Files that nobody may read meanwhile, relative to the tree.
    QStringList unreadable;

    /// Links of a tlk file are not read; or not written.
    bool IsBlind(const QString& file) const
    {
        return !fault.isEmpty() && file.endsWith(QStringLiteral(".tlk"));
    }

    QStringList Arguments() const;
};

/// A tree of sources in "work" and "home", and what happens to it and to the cloud folder between
/// imports. Everything that is done is noted as a line of a shell script, which does it again.
class RandomWorld
{
public:
    RandomWorld(FileTree& tree, quint32 seed);

    void MakeSources();
    /// Changes on both sides. `copies` are paths of copies, `step` the import that comes next.
    void Disturb(const QStringList& copies, const ImportStep& step);
    ImportStep NextImport();
    bool LooksAhead() { return m_dice.Chance(20); }
    bool RetriesNow() { return m_dice.Chance(15); }

    void Note(const QString& line) { m_script.append(line); }
    QString Script() const { return m_script.join(u'\n') + u'\n'; }

private:
    QString NewName();
    QStringList PlainFile();
    QStringList SourceFiles() const;
    QStringList LinkableFiles() const;
    QString RandomLink(const QString& from, const QString& to);
    QString DeadLink(const QString& from);
    QStringList RandomLinks(const QString& file);
    QByteArray NewContent(const QString& file, const QStringList& links);

    void DisturbSource(const ImportStep& step);
    void DisturbCopy(const QStringList& copies, const ImportStep& step);
    void KeepAnySource();
    void EditSource(const QString& file, const ImportStep& step);
    void EditCopy(const QString& file, const ImportStep& step);
    void PutForeignFile(const ImportStep& step);
    void SwapFolder(const QString& copy);

    void Write(const QString& file, const QByteArray& content);
    void SetTime(const QString& file, qint64 nanoseconds);
    void Remove(const QString& file);
    void LinkTo(const QString& at, const QString& target);

    FileTree& m_tree;
    Dice m_dice;
    QStringList m_script;
    int m_tags = 0;
    int m_seconds = 0;
};

} // namespace Halvern::Test
