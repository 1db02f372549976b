// SPDX-License-Identifier: Apache-2.0

#include "ExpectedImport.h"

#include "DesignFiles.h"

#include <QtCore/QDir>
#include <QtCore/QFileInfo>

#include <algorithm>
#include <utility>

namespace Halvern::Test {

using namespace Qt::StringLiterals;

ExpectedImport::ExpectedImport(const FileTree& tree, const ImportStep& step,
                               const QMap<QString, QString>& moved)
    : m_tree(tree), m_step(step), m_moved(moved)
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
    if (info.isFile() && isLink && !IsAllowed(info.filePath(), step)) {
        m_refused.append(path);
        return;
    }
    if (info.isFile()) {
        m_files[path].isSelected = true;
        return;
    }
    const QDir folder(info.filePath());
    for (const QString& name :
         folder.entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot))
        Select(path + u'/' + name, step);
}

void ExpectedImport::Read(const QString& path, const ImportStep& step)
{
    ExpectedFile& file = m_files[path];
    file.content = m_tree.Read(path);
    file.isFollowed = file.isSelected || !step.directLinksOnly;
    file.isBlind = step.IsBlind(path);
    const QFileInfo info(m_tree.Path(path));
    file.isUnreadable = !(info.permissions() & QFile::ReadOwner);
    if (file.isFollowed)
        for (const QString& text : LinksIn(path, file.content))
            file.links.append(Resolve(path, text));
}

QStringList ExpectedImport::NewLinksOf(const QString& path)
{
    QStringList found;
    for (const ExpectedLink& link : m_files.value(path).links) {
        if (link.kind != ExpectedLink::Live || link.file.startsWith(u"cloud/"_s) ||
            m_files.contains(link.file))
            continue;
        const bool isTwin = HasTwinOf(link.file);
        m_files[link.file].isTwin = isTwin;
        found.append(link.file);
    }
    return found;
}

void ExpectedImport::Follow(const ImportStep& step)
{
    // What blind files link comes last, unless others link it, too.
    QStringList toRead = m_files.keys();
    QStringList blind;
    for (bool isOptional = false; !toRead.isEmpty() || !blind.isEmpty();) {
        if (toRead.isEmpty()) {
            isOptional = true;
            for (const QString& path : std::exchange(blind, {}))
                toRead += NewLinksOf(path);
            continue;
        }
        const QString path = toRead.takeFirst();
        m_files[path].isOptional = isOptional;
        Read(path, step);
        if (m_files.value(path).isBlind)
            blind.append(path);
        else
            toRead += NewLinksOf(path);
    }
}

/// Whether `--within` lets a file come, by where it leads.
bool ExpectedImport::IsAllowed(const QString& whole, const ImportStep& step) const
{
    if (step.within.isEmpty())
        return true;
    const QString real = QFileInfo(whole).canonicalFilePath();
    QStringList folders{m_tree.Path(u"cloud"_s)};
    for (const QString& folder : step.within + step.sources)
        folders.append(QDir::cleanPath(m_tree.Path(u"work/"_s + folder)));
    return std::any_of(folders.begin(), folders.end(), [&](const QString& folder) {
        const QString top = QFileInfo(folder).canonicalFilePath();
        return !top.isEmpty() && (real + u'/').startsWith(top + u'/');
    });
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
    else if (link.file.startsWith(u"home/."_s) || !IsAllowed(whole, m_step))
        link.kind = ExpectedLink::Refused;
    else if (m_step.excludesBackups && m_step.sources.contains(u"proj"_s) &&
             link.file.startsWith(u"work/proj/"_s) && link.file.endsWith(u".bak"_s))
        link.kind = ExpectedLink::Excluded;
    return link;
}

bool ExpectedImport::HasBlindFiles() const
{
    return std::any_of(m_files.begin(), m_files.end(),
                       [](const ExpectedFile& file) { return file.isBlind; });
}

/// For sure.
bool ExpectedImport::Has(ExpectedLink::Kind kind) const
{
    return std::any_of(m_files.begin(), m_files.end(), [&](const ExpectedFile& file) {
        return !file.isBlind && !file.isOptional &&
               std::any_of(file.links.begin(), file.links.end(),
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
