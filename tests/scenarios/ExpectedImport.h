// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "FileStamp.h"
#include "FileTree.h"
#include "RandomWorld.h"

#include <QtCore/QMap>

namespace Halvern::Test {

/// Where a link leads, asked of the disk and of nobody else.
struct ExpectedLink
{
    enum Kind
    {
        Live,
        Dead,
        Refused,
        Url,
        /// A pattern keeps it out of the selection.
        Excluded,
        /// An earlier move of this project has deleted the file.
        Moved,
    };

    QString text;
    Kind kind = Live;
    /// Relative to the tree when it lies in it.
    QString file;
};

struct ExpectedFile
{
    bool isSelected = false;
    /// Its links are read and rewritten.
    bool isFollowed = false;
    /// Another name of a file of the import: it may come under each name, or under one.
    bool isTwin = false;
    /// Its links cannot be read or written now; what it links may come all the same, when it is
    /// known from an earlier import.
    bool isBlind = false;
    /// Only blind files lead to it.
    bool isOptional = false;
    bool isUnreadable = false;
    QByteArray content;
    QList<ExpectedLink> links;
};

/// Which files an import is about, and where their links lead: a model of it that knows neither
/// plug-ins nor the database.
class ExpectedImport
{
public:
    /// `moved` are the sources that are gone because their copies took their place, with those.
    ExpectedImport(const FileTree& tree, const ImportStep& step,
                   const QMap<QString, QString>& moved);

    const QMap<QString, ExpectedFile>& Files() const { return m_files; }
    /// Symbolic links to folders, and those that lead nowhere, in the selection.
    const QStringList& LeftOut() const { return m_leftOut; }
    const QMap<QString, QString>& Moved() const { return m_moved; }
    /// Symbolic links in the selection that lead to where nothing may come from.
    const QStringList& Refused() const { return m_refused; }
    bool HasDeadLinks() const { return Has(ExpectedLink::Dead); }
    bool HasRefusedLinks() const { return !m_refused.isEmpty() || Has(ExpectedLink::Refused); }
    bool HasBlindFiles() const;
    /// Every file that can be reached through links, with itself.
    QStringList LinkTree(const QString& file) const;
    /// Where a link of a file leads.
    ExpectedLink Resolve(const QString& file, const QString& text) const;

private:
    void Select(const QString& path, const ImportStep& step);
    void Follow(const ImportStep& step);
    void Read(const QString& path, const ImportStep& step);
    QStringList NewLinksOf(const QString& path);
    bool IsAllowed(const QString& whole, const ImportStep& step) const;
    bool Has(ExpectedLink::Kind kind) const;
    /// 0 when there is no such file.
    quint64 IdentityOf(const QString& file) const;
    bool HasTwinOf(const QString& file) const;

    const FileTree& m_tree;
    const ImportStep m_step;
    QMap<QString, ExpectedFile> m_files;
    QStringList m_leftOut;
    QStringList m_refused;
    const QMap<QString, QString> m_moved;
};

} // namespace Halvern::Test
