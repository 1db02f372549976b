// SPDX-License-Identifier: Apache-2.0

#include "RandomWorld.h"

#include "DesignFiles.h"
#include "FileStamp.h"

#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QRegularExpression>

#include <filesystem>

namespace Halvern::Test {

using namespace Qt::StringLiterals;

namespace {

/// Names that differ in letter case, and symbolic links.
const bool KnowsTwins = QDir::separator() == u'/';

constexpr qint64 Second = 1'000'000'000;
/// Of all files: long before any import.
constexpr qint64 Beginning = 1'600'000'000 * Second;

const QStringList Folders{u"work/proj"_s, u"work/proj/sub"_s,   u"work/proj/Sub"_s,
                          u"work/lib"_s,  u"work/other/deep"_s, u"home/pictures"_s};
const QStringList Bases{
    u"part"_s,        u"Part"_s,    u"PART"_s,      u"bolt"_s,       u"a b"_s, u"h\u00f6he"_s,
    u"stra\u00dfe"_s, u"strasse"_s, u"caf\u00e9"_s, u"cafe\u0301"_s, u"x"_s};
const QStringList PlainTypes{u"bin"_s, u"png"_s, u"txt"_s};
/// Without those of Wavefront objects, which find libraries by their names.
const QStringList LinkingTypes{u"gltf"_s, u"svg"_s, u"mtl"_s, u"scad"_s, u"stp"_s, u"tlk"_s};

QString Quoted(const QString& text)
{
    return u'\'' + QString(text).replace(u'\'', u"'\\''"_s) + u'\'';
}

/// For printf's first argument.
QString Escaped(const QByteArray& bytes)
{
    QString text;
    for (const char byte : bytes) {
        if (byte == '%')
            text += u"%%"_s;
        else if (byte == '\\' || byte == '\'' || byte < ' ')
            text += u'\\' + QString::number(uchar(byte), 8).rightJustified(3, u'0');
        else
            text += QLatin1Char(byte);
    }
    return text;
}

/// What printf is called with; the tree's own path becomes the current one.
QString Printed(const QByteArray& bytes, const QString& root)
{
    const QString here = Escaped(root.toUtf8());
    QString text = Escaped(bytes);
    const QString arguments = u" \"$PWD\""_s.repeated(text.count(here));
    return u'\'' + text.replace(here, u"%s"_s) + u'\'' + arguments;
}

QString FolderOf(const QString& file)
{
    return QFileInfo(file).path();
}

bool IsLinking(const QString& file)
{
    return LinkingTypes.contains(QFileInfo(file).suffix());
}

} // namespace

QStringList ImportStep::Arguments() const
{
    QStringList arguments = sources;
    arguments += {u"--to"_s, to, u"--collisions"_s, collisions, u"--on-conflict"_s, onConflict};
    const auto flag = [&](bool isSet, const QString& name) {
        if (isSet)
            arguments.append(name);
    };
    flag(move, u"--move"_s);
    flag(linksOnly, u"--links-only"_s);
    flag(directLinksOnly, u"--direct-links-only"_s);
    flag(selfContained, u"--self-contained"_s);
    flag(force, u"--force"_s);
    flag(checksum, u"--checksum"_s);
    flag(reread, u"--reread"_s);
    flag(prune, u"--prune"_s);
    if (excludesBackups)
        arguments += {u"--exclude"_s, u"*.bak"_s};
    for (const QString& folder : within)
        arguments += {u"--within"_s, folder};
    return arguments;
}

RandomWorld::RandomWorld(FileTree& tree, quint32 seed) : m_tree(tree), m_dice(seed) {}

void RandomWorld::MakeSources()
{
    const int files = 3 + m_dice.Below(10);
    QStringList names;
    for (int file = 0; file < files; ++file)
        names.append(NewName());
    names.removeDuplicates();
    // First all of them without links, so that any can link any.
    for (const QString& name : names)
        Write(name, NewContent(name, {}));
    Write(u"home/.ssh/key"_s, "secret key");
    Write(u"cloud/std/standard.bin"_s, "standard");
    for (const QString& name : names)
        if (IsLinking(name))
            Write(name, NewContent(name, RandomLinks(name)));
    if (m_dice.Chance(30))
        Write(u"work/proj/old.bak"_s, "backup");
    if (KnowsTwins && m_dice.Chance(30))
        LinkTo(u"work/proj/linked.bin"_s, m_dice.Pick(names));
    if (KnowsTwins && m_dice.Chance(20))
        LinkTo(u"work/proj/folder"_s, u"home/pictures"_s);
    if (KnowsTwins && m_dice.Chance(20))
        LinkTo(u"work/proj/dead.bin"_s, u"work/nowhere.bin"_s);
    if (m_dice.Chance(30)) {
        const QString of = m_dice.Pick(names);
        const QString at = FolderOf(of) + u"/twin."_s + QFileInfo(of).suffix();
        std::filesystem::create_hard_link(m_tree.Path(of).toStdU16String(),
                                          m_tree.Path(at).toStdU16String());
        Note(u"ln "_s + Quoted(of) + u' ' + Quoted(at));
    }
}

ImportStep RandomWorld::NextImport()
{
    ImportStep step;
    step.to = m_dice.Pick({u"T1"_s, u"T1"_s, u"T2"_s, u"T2/inner"_s});
    step.collisions = m_dice.Pick({u"stop"_s, u"stop"_s, u"keep"_s, u"rename"_s, u"replace"_s});
    step.onConflict = m_dice.Pick({u"stop"_s, u"keep"_s, u"rename"_s, u"replace"_s});
    QStringList files;
    for (const QString& file : SourceFiles())
        if (file.startsWith(u"work/proj/"_s) && !file.endsWith(u".bak"_s))
            files.append(file.mid(5));
    const bool isFolder = files.isEmpty() || m_dice.Chance(55);
    step.sources = {isFolder ? u"proj"_s : m_dice.Pick(files)};
    if (!isFolder && m_dice.Chance(30)) {
        step.sources.append(m_dice.Pick(files));
        step.sources.removeDuplicates();
    }
    step.linksOnly = step.sources.size() == 1 && !isFolder && m_dice.Chance(15);
    step.move = !step.linksOnly && m_dice.Chance(12);
    step.directLinksOnly = m_dice.Chance(8);
    step.selfContained = m_dice.Chance(20);
    step.force = m_dice.Chance(8);
    step.checksum = m_dice.Chance(20);
    step.reread = m_dice.Chance(15);
    step.prune = m_dice.Chance(10);
    step.excludesBackups = m_dice.Chance(20);
    if (m_dice.Chance(15))
        step.within = m_dice.Chance(50) ? QStringList{u"proj"_s}
                                        : QStringList{u"lib"_s, u"../home/pictures"_s};
    // They must exist, whatever is in them.
    for (const QString& folder : std::as_const(step.within)) {
        const QString path = QDir::cleanPath(u"work/"_s + folder);
        if (m_tree.Exists(path))
            continue;
        m_tree.Folder(path);
        Note(u"mkdir -p "_s + path);
    }
    if (m_dice.Chance(20))
        step.fault = m_dice.Pick({u"fail"_s, u"norepath"_s, u"lies"_s, u"absent"_s});
    if (KnowsTwins && m_dice.Chance(15))
        step.unreadable = PlainFile();
    return step;
}

/// One that holds no links: those of others may be known from an earlier import.
QStringList RandomWorld::PlainFile()
{
    static const QRegularExpression plain(u"\\.(bin|png|txt)$"_s);
    const QStringList files = SourceFiles().filter(plain);
    return files.isEmpty() ? QStringList() : QStringList{m_dice.Pick(files)};
}

void RandomWorld::Disturb(const QStringList& copies, const ImportStep& step)
{
    KeepAnySource();
    for (int change = m_dice.Below(4); change > 0; --change)
        DisturbSource(step);
    for (int change = m_dice.Below(4); change > 0; --change)
        DisturbCopy(copies, step);
    if (m_dice.Chance(25))
        PutForeignFile(step);
}

QString RandomWorld::NewName()
{
    const bool links = m_dice.Chance(60);
    QString base = m_dice.Pick(Bases);
    if (!KnowsTwins)
        base = base.toLower();
    QString folder = m_dice.Pick(Folders);
    if (!KnowsTwins)
        folder = folder.toLower();
    return folder + u'/' + base + u'.' + m_dice.Pick(links ? LinkingTypes : PlainTypes);
}

QStringList RandomWorld::SourceFiles() const
{
    QStringList files;
    for (const QString& folder : {u"work"_s, u"home"_s}) {
        const auto stamps = StampsBelow(m_tree.Path(folder));
        for (auto it = stamps.begin(); it != stamps.end(); ++it)
            if (it->kind == "file" && !it.key().startsWith(u".ssh"_s))
                files.append(folder + u'/' + it.key());
    }
    files.sort();
    return files;
}

QStringList RandomWorld::LinkableFiles() const
{
    return SourceFiles().filter(QRegularExpression(u"(?<!\\.bak)$"_s));
}

QString RandomWorld::RandomLink(const QString& from, const QString& to)
{
    const QString whole = m_tree.Path(to);
    QString link = QDir(FolderOf(m_tree.Path(from))).relativeFilePath(whole);
    switch (m_dice.Below(6)) {
    case 0:
        return whole;
    case 1:
        return u"./"_s + link;
    case 2:
        return u"../"_s + QFileInfo(FolderOf(from)).fileName() + u'/' + link;
    default:
        return link;
    }
}

QString RandomWorld::DeadLink(const QString& from)
{
    const QString other = m_dice.Pick(SourceFiles());
    const QString name = QFileInfo(other).fileName();
    switch (m_dice.Below(7)) {
    case 0:
        return u"/nowhere/"_s + name;
    case 1:
        return u"D:/lib/"_s + name;
    case 2:
        return u"../gone/"_s + name;
    case 3:
        return u"/nowhere/"_s + QFileInfo(from).fileName();
    case 4:
        return m_tree.Path(u"home/.ssh/key"_s);
    case 5: {
        // In another letter case, which leads nowhere where a disk knows the difference.
        const QString base = QFileInfo(other).completeBaseName();
        const QString twin = KnowsTwins ? base.toUpper() : base + u"-none"_s;
        return RandomLink(from, FolderOf(other) + u'/' + twin + u'.' + QFileInfo(other).suffix());
    }
    default:
        return u"https://example.org/"_s + QString::number(m_dice.Below(9)) + u".png"_s;
    }
}

QStringList RandomWorld::RandomLinks(const QString& file)
{
    QStringList links;
    const QStringList files = LinkableFiles();
    for (int link = m_dice.Below(4); link > 0; --link)
        links.append(m_dice.Chance(80) ? RandomLink(file, m_dice.Pick(files)) : DeadLink(file));
    if (m_dice.Chance(10))
        links.append(RandomLink(file, u"cloud/std/standard.bin"_s));
    if (m_tree.Exists(u"work/proj/old.bak"_s) && m_dice.Chance(10))
        links.append(RandomLink(file, u"work/proj/old.bak"_s));
    return links;
}

QByteArray RandomWorld::NewContent(const QString& file, const QStringList& links)
{
    const QByteArray tag = "tag " + QByteArray::number(++m_tags) + ' ';
    return DesignFile(file, links, tag + QByteArray(m_tags % 37, 'x'));
}

void RandomWorld::DisturbSource(const ImportStep& step)
{
    const QString file = m_dice.Pick(SourceFiles());
    switch (m_dice.Below(7)) {
    case 0:
        Remove(file);
        break;
    case 1: {
        const QString to = NewName();
        if (!m_tree.Exists(to) && QFileInfo(to).suffix() == QFileInfo(file).suffix()) {
            QDir().mkpath(FolderOf(m_tree.Path(to)));
            QFile::rename(m_tree.Path(file), m_tree.Path(to));
            Note(u"mkdir -p "_s + Quoted(FolderOf(to)) + u"; mv "_s + Quoted(file) + u' ' +
                 Quoted(to));
        }
        break;
    }
    case 2: {
        const QString name = NewName();
        if (!m_tree.Exists(name))
            Write(name, NewContent(name, IsLinking(name) ? RandomLinks(name) : QStringList()));
        break;
    }
    case 3:
        SetTime(file, ModifiedNanoseconds(m_tree.Path(file)) + 7 * Second);
        break;
    default:
        EditSource(file, step);
        break;
    }
    KeepAnySource();
}

/// Moves and deletions may leave none.
void RandomWorld::KeepAnySource()
{
    if (LinkableFiles().isEmpty())
        Write(u"work/proj/last.txt"_s, NewContent(u"last.txt"_s, {}));
}

void RandomWorld::EditSource(const QString& file, const ImportStep& step)
{
    const qint64 before = ModifiedNanoseconds(m_tree.Path(file));
    const qint64 size = QFileInfo(m_tree.Path(file)).size();
    const bool keepsLinks = m_dice.Chance(60);
    QStringList links = LinksIn(file, m_tree.Read(file));
    if (IsLinking(file) && !keepsLinks)
        links = RandomLinks(file);
    Write(file, NewContent(file, links));
    const bool sameSize = QFileInfo(m_tree.Path(file)).size() == size;
    // With its old time it is noticed by its size, or by the content when that is asked for; within
    // the same second by the time.
    if (m_dice.Chance(15) && (!sameSize || step.checksum))
        SetTime(file, before);
    else if (m_dice.Chance(15))
        SetTime(file, before + 1000);
}

void RandomWorld::DisturbCopy(const QStringList& copies, const ImportStep& step)
{
    QStringList there;
    for (const QString& copy : copies)
        if (StampOf(m_tree.Path(copy)).kind == "file")
            there.append(copy);
    if (there.isEmpty())
        return;
    const QString copy = m_dice.Pick(there);
    switch (m_dice.Below(8)) {
    case 0:
        Remove(copy);
        break;
    case 1:
        SetTime(copy, ModifiedNanoseconds(m_tree.Path(copy)) + 7 * Second);
        break;
    case 2: {
        // Another file takes its place.
        Remove(copy);
        Write(copy, NewContent(copy, {}));
        break;
    }
    case 3:
        SwapFolder(copy);
        break;
    case 4: {
        const qint64 before = ModifiedNanoseconds(m_tree.Path(copy));
        if (QFileInfo(m_tree.Path(copy)).size() > 0 && !IsLinking(copy)) {
            Write(copy, {});
            SetTime(copy, before);
        }
        break;
    }
    default:
        EditCopy(copy, step);
        break;
    }
}

void RandomWorld::EditCopy(const QString& file, const ImportStep& step)
{
    const qint64 before = ModifiedNanoseconds(m_tree.Path(file));
    const qint64 size = QFileInfo(m_tree.Path(file)).size();
    Write(file, NewContent(file, LinksIn(file, m_tree.Read(file))));
    const bool sameSize = QFileInfo(m_tree.Path(file)).size() == size;
    if (m_dice.Chance(15) && (!sameSize || step.checksum))
        SetTime(file, before);
}

void RandomWorld::PutForeignFile(const ImportStep& step)
{
    const QString source = m_dice.Pick(SourceFiles());
    const QString name = source.section(u'/', 1);
    const QString below = m_dice.Chance(50)
                              ? name
                              : QFileInfo(name).dir().dirName() + u'/' + QFileInfo(name).fileName();
    const QString target =
        u"cloud/"_s + step.to + u'/' + (m_dice.Chance(50) ? below : QFileInfo(name).fileName());
    const FileStamp there = StampOf(m_tree.Path(target));
    if (there.kind != "none")
        return;
    if (m_dice.Chance(30))
        Write(target, m_tree.Read(source));
    else if (m_dice.Chance(10))
        Write(target + u"/in the way.txt"_s, NewContent(u"x.txt"_s, {}));
    else
        Write(target, NewContent(target, IsLinking(target) ? QStringList{u"foreign.bin"_s}
                                                           : QStringList()));
}

void RandomWorld::SwapFolder(const QString& copy)
{
    const QString folder = FolderOf(copy);
    if (!KnowsTwins || folder == u"cloud"_s || StampOf(m_tree.Path(folder)).kind != "folder")
        return;
    const QString away = u"outside/"_s + QString::number(++m_tags);
    m_tree.Folder(u"outside"_s);
    QFile::rename(m_tree.Path(folder), m_tree.Path(away));
    Note(u"mkdir -p outside; mv "_s + Quoted(folder) + u' ' + Quoted(away));
    LinkTo(folder, away);
}

void RandomWorld::Write(const QString& file, const QByteArray& content)
{
    m_tree.File(file, content);
    Note(u"mkdir -p "_s + Quoted(FolderOf(file)) + u"; printf "_s +
         Printed(content, m_tree.Path()) + u" > "_s + Quoted(file));
    SetTime(file, Beginning + (m_seconds += 10) * Second);
}

void RandomWorld::SetTime(const QString& file, qint64 nanoseconds)
{
    SetModifiedNanoseconds(m_tree.Path(file), nanoseconds);
    Note(u"touch -d @%1.%2 "_s.arg(nanoseconds / Second)
             .arg(nanoseconds % Second, 9, 10, QLatin1Char('0')) +
         Quoted(file));
}

void RandomWorld::Remove(const QString& file)
{
    m_tree.Remove(file);
    Note(u"rm "_s + Quoted(file));
}

void RandomWorld::LinkTo(const QString& at, const QString& target)
{
    QDir().mkpath(FolderOf(m_tree.Path(at)));
    if (QFile::link(m_tree.Path(target), m_tree.Path(at)))
        Note(u"mkdir -p "_s + Quoted(FolderOf(at)) + u"; ln -s \"$PWD\"/"_s + Quoted(target) +
             u' ' + Quoted(at));
}

} // namespace Halvern::Test
