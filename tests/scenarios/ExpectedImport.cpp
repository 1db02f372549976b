// SPDX-License-Identifier: Apache-2.0

#include "ExpectedImport.h"

#include "DesignFiles.h"

#include <QtCore/QDir>
#include <QtCore/QFileInfo>

#include <algorithm>

namespace Halvern::Test {

using namespace Qt::StringLiterals;

ExpectedImport::ExpectedImport(const FileTree& tree, const ImportStep& step,
                               const QMap<QString, QString>& moved)
    : m_tree(tree), m_moved(moved)
{
    for (const QString& source : step.sources)
        Select(u"work/"_s + source, step);
    Follow(step);
}

void ExpectedImport::Select(const QString& path, const ImportStep& step)
{
    const QFileInfo info(m_tree.Path(path));
    const bool isLink = StampOf(info.filePath()).kind == "link";
    if (isLink && (info.isDir() || !info.exists())) {
        m_leftOut.append(path);
        return;
    }
    if (step.excludesBackups && path.endsWith(u".bak"_s))
        return;
    if (info.isFile()) {
        m_files[path].isSelected = true;
        return;
    }
    const QDir folder(info.filePath());
    for (const QString& name :
         folder.entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot))
        Select(path + u'/' + name, step);
}

void ExpectedImport::Follow(const ImportStep& step)
{
    QStringList toRead = m_files.keys();
    while (!toRead.isEmpty()) {
        const QString path = toRead.takeFirst();
        ExpectedFile& file = m_files[path];
        file.content = m_tree.Read(path);
        file.isFollowed = file.isSelected || !step.directLinksOnly;
        if (!file.isFollowed)
            continue;
        for (const QString& text : LinksIn(path, file.content))
            file.links.append(Resolve(path, text));
        for (const ExpectedLink& link : QList<ExpectedLink>(file.links)) {
            if (link.kind != ExpectedLink::Live || link.file.startsWith(u"cloud/"_s) ||
                m_files.contains(link.file))
                continue;
            const bool isTwin = HasTwinOf(link.file);
            m_files[link.file].isTwin = isTwin;
            toRead.append(link.file);
        }
    }
}

ExpectedLink ExpectedImport::Resolve(const QString& file, const QString& text) const
{
    ExpectedLink link;
    link.text = text;
    if (text.startsWith(u"https:"_s)) {
        link.kind = ExpectedLink::Url;
        return link;
    }
    // A whole path on every system.
    if (text.startsWith(u"D:/"_s)) {
        link.kind = ExpectedLink::Dead;
        link.file = text;
        return link;
    }
    const QString folder = QFileInfo(m_tree.Path(file)).path();
    const QString whole = QDir::cleanPath(QDir::isAbsolutePath(text) ? text : folder + u'/' + text);
    const QString root = m_tree.Path() + u'/';
    link.file = whole.startsWith(root) ? whole.mid(root.size()) : whole;
    if (!QFileInfo(whole).isFile())
        link.kind = m_moved.contains(link.file) ? ExpectedLink::Moved : ExpectedLink::Dead;
    else if (link.file.startsWith(u"home/."_s))
        link.kind = ExpectedLink::Refused;
    return link;
}

bool ExpectedImport::Has(ExpectedLink::Kind kind) const
{
    return std::any_of(m_files.begin(), m_files.end(), [&](const ExpectedFile& file) {
        return std::any_of(file.links.begin(), file.links.end(),
                           [&](const ExpectedLink& link) { return link.kind == kind; });
    });
}

quint64 ExpectedImport::IdentityOf(const QString& file) const
{
    const QString path = QFileInfo(m_tree.Path(file)).canonicalFilePath();
    return path.isEmpty() ? 0 : StampOf(path).index;
}

bool ExpectedImport::HasTwinOf(const QString& file) const
{
    const quint64 identity = IdentityOf(file);
    const QStringList files = m_files.keys();
    return std::any_of(files.begin(), files.end(),
                       [&](const QString& other) { return IdentityOf(other) == identity; });
}

QStringList ExpectedImport::LinkTree(const QString& file) const
{
    QStringList tree{file};
    for (qsizetype at = 0; at < tree.size(); ++at)
        for (const ExpectedLink& link : m_files.value(tree.at(at)).links)
            if (m_files.contains(link.file) && !tree.contains(link.file))
                tree.append(link.file);
    return tree;
}

} // namespace Halvern::Test
