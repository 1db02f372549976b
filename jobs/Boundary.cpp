// SPDX-License-Identifier: Apache-2.0

#include "Boundary.h"

#include "Paths.h"
#include "ProjectFolders.h"

#include "base/NativePath.h"
#include "base/PathText.h"
#include "base/Units.h"

#include <QtCore/QDir>
#include <QtCore/QFileInfo>
#include <QtCore/QSet>

#include <algorithm>

namespace Halvern::Jobs {

namespace {

constexpr PlaceMarks Strict = PlaceMark::Selected | PlaceMark::Cloud | PlaceMark::Within;
constexpr PlaceMarks Exempt = Strict | PlaceMark::Allowed;
/// Somebody has named the very place.
constexpr PlaceMarks Named = PlaceMark::Cloud | PlaceMark::Within | PlaceMark::Allowed;
constexpr PlaceMarks OwnWork = PlaceMark::Selected | PlaceMark::Cloud | PlaceMark::Project;

/// Private keys, and files in which programs keep passwords. Only names that nobody gives to
/// anything else.
bool IsKey(const QString& path)
{
    static const QStringList names = {
        // SSH
        QStringLiteral("id_rsa"), QStringLiteral("id_dsa"), QStringLiteral("id_ecdsa"),
        QStringLiteral("id_ed25519"), QStringLiteral("id_ecdsa_sk"),
        QStringLiteral("id_ed25519_sk"),
        // Passwords for servers, Git, PostgreSQL, web servers and package registries
        QStringLiteral(".netrc"), QStringLiteral("_netrc"), QStringLiteral(".git-credentials"),
        QStringLiteral(".pgpass"), QStringLiteral(".htpasswd"), QStringLiteral(".npmrc"),
        QStringLiteral(".pypirc"), QStringLiteral(".env")};
    // Keys and certificates, PuTTY, Kerberos, KeePass.
    static const QStringList endings = {QStringLiteral(".pem"),    QStringLiteral(".p12"),
                                        QStringLiteral(".pfx"),    QStringLiteral(".ppk"),
                                        QStringLiteral(".keytab"), QStringLiteral(".kdbx")};
    const QString name = NameOf(path).toCaseFolded();
    return names.contains(name) ||
           std::any_of(endings.begin(), endings.end(),
                       [&](const QString& ending) { return name.endsWith(ending); });
}

/// What programs keep for themselves beside the work: a repository's own files, which may hold
/// passwords for its server, and keys.
bool IsKeptApart(const QString& path)
{
    static const QSet<QString> names = {QStringLiteral(".git"),  QStringLiteral(".hg"),
                                        QStringLiteral(".svn"),  QStringLiteral(".bzr"),
                                        QStringLiteral(".ssh"),  QStringLiteral(".gnupg"),
                                        QStringLiteral(".aws"),  QStringLiteral(".azure"),
                                        QStringLiteral(".kube"), QStringLiteral(".docker")};
    // Where git-annex has the files themselves.
    static const QString annex = QStringLiteral("/.git/annex/objects/");
    const QString folder = FolderAbove(path).toCaseFolded();
    if (folder.contains(annex))
        return false;
    const QStringList parts = folder.split(u'/');
    return std::any_of(parts.begin(), parts.end(),
                       [&](const QString& part) { return names.contains(part); });
}

/// On Windows: a pipe or a device, or a way around the rules on paths.
bool NamesDevice(const QString& path)
{
    return Base::ThisSystem == Base::System::Windows && Base::NamesDevice(Base::Units(path));
}

} // namespace

QList<BoundaryPlace> BoundaryPlacesOfSystem()
{
    QList<BoundaryPlace> places;
    for (const Base::PlaceOfSystem& place : Base::PlacesOfSystem())
        places.append({QStringView(Base::PathText(place.folder)).toString(), place.kind});
    return places;
}

Boundary::Boundary(const QStringList& sources, const BoundaryFolders& folders,
                   const QList<BoundaryPlace>& places)
    : m_isStrict(!folders.within.isEmpty())
{
    for (const BoundaryPlace& place : places) {
        const QString folder = QDir::cleanPath(place.folder);
        const QString real = m_real.OfFolder(folder);
        m_map.Add(folder, place.kind);
        // Where a whole system lies in another folder, /var/usrlocal is /usr/local.
        if (real != folder && !QDir(real).isRoot())
            m_map.Add(real, place.kind);
    }
    for (const QString& folder : folders.within)
        Mark(AbsolutePath(folder), PlaceMark::Within);
    for (const QString& folder : folders.allowed)
        if (QDir::isAbsolutePath(folder))
            Mark(AbsolutePath(folder), PlaceMark::Allowed);
    if (!folders.cloud.isEmpty())
        Mark(AbsolutePath(folders.cloud), PlaceMark::Cloud);
    QStringList cleaned;
    for (const QString& source : sources)
        cleaned.append(AbsolutePath(source));
    MarkSources(cleaned);
}

Boundary::Answer Boundary::Check(const QString& path)
{
    if (NamesDevice(path))
        return {false, Remark::SystemPlace, false};
    const QString written = AbsolutePath(path);
    const QString real = m_real.OfFile(written);
    const PlaceMarks marks = m_map.OfFile(real).marks;
    Remark refusal = Remark::None;
    if (m_isStrict && !(marks & Strict))
        refusal = Remark::NotWithin;
    else if (!(marks & Exempt))
        refusal = RefusalOf(written, real);
    // Also below a folder that was given: nobody means these when they give it.
    if (refusal == Remark::None && !(marks & Named) && (IsKeptApart(written) || IsKeptApart(real)))
        refusal = Remark::SecretPlace;
    const bool allowed = refusal == Remark::None;
    return {allowed, refusal, allowed && !(marks & OwnWork)};
}

QString Boundary::RealPathOf(const QString& path)
{
    return m_real.OfFile(AbsolutePath(path));
}

/// Both as it is written and where it leads: the disk may have changed since somebody looked.
void Boundary::Mark(const QString& path, PlaceMark mark)
{
    m_map.Mark(path, mark);
    m_map.Mark(m_real.OfFolder(path), mark);
}

void Boundary::MarkSources(const QStringList& sources)
{
    QStringList folders;
    for (const QString& source : sources) {
        m_map.Mark(source, PlaceMark::Selected);
        const bool isFolder = IsFolder(source);
        const QString folder = isFolder ? source : FolderAbove(source);
        const QString real = m_real.OfFolder(folder);
        m_map.Mark(isFolder ? real : QDir(real).filePath(NameOf(source)), PlaceMark::Selected);
        folders.append(folder);
    }
    folders.removeDuplicates();
    MarkProject(folders);
    MarkWhatSourcesLeadTo(sources);
}

void Boundary::MarkProject(const QStringList& sourceFolders)
{
    QStringList folders = {CommonFolder(sourceFolders)};
    if (!CanBeProject(folders.first()))
        folders = sourceFolders;
    QStringList real;
    for (const QString& folder : sourceFolders)
        real.append(m_real.OfFolder(folder));
    folders += VersionedFolders(sourceFolders + real);
    folders.erase(std::remove_if(folders.begin(), folders.end(),
                                 [&](const QString& folder) { return !CanBeProject(folder); }),
                  folders.end());
    for (const QString& folder : std::as_const(folders))
        Mark(folder, PlaceMark::Project);
}

bool Boundary::CanBeProject(const QString& folder)
{
    const auto isFit = [&](const QString& path) {
        const PlaceFacts facts = m_map.OfFolder(path);
        return !path.isEmpty() && !QDir(path).isRoot() && !Base::IsShareRoot(Base::Units(path)) &&
               !facts.isHome && !facts.refusalBegins && !m_map.HoldsOwnHome(path);
    };
    return isFit(folder) && isFit(m_real.OfFolder(folder));
}

/// A file that was given by a symbolic link is the file that was given, if it may be.
void Boundary::MarkWhatSourcesLeadTo(const QStringList& sources)
{
    QStringList targets;
    for (const QString& source : sources) {
        const QString real = m_real.OfFile(source);
        const PlaceFacts facts = m_map.OfFile(real);
        if (!(facts.marks & PlaceMark::Selected) && facts.refusal == Remark::None && !IsKey(real))
            targets.append(real);
    }
    for (const QString& target : std::as_const(targets))
        m_map.Mark(target, PlaceMark::Selected);
}

Remark Boundary::RefusalOf(const QString& path, const QString& real)
{
    const PlaceFacts named = m_map.OfFile(path);
    if (!(named.marks & Exempt)) {
        if (named.refusal != Remark::None)
            return named.refusal;
        if (IsKey(path))
            return Remark::SecretPlace;
    }
    const Remark refusal = m_map.OfFile(real).refusal;
    return refusal == Remark::None && IsKey(real) ? Remark::SecretPlace : refusal;
}

} // namespace Halvern::Jobs
