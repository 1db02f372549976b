// SPDX-License-Identifier: Apache-2.0

#include "PlaceMap.h"

#include "Paths.h"
#include "RealPaths.h"

#include "base/CaseFolding.h"
#include "base/FileStatus.h"
#include "base/NativePath.h"
#include "base/PathText.h"
#include "base/SamePath.h"
#include "base/Units.h"

#include <algorithm>

namespace Halvern::Jobs {

namespace {

using Base::PlaceKind;

QString Folded(const QString& path)
{
    return QStringView(Base::FoldCase(Base::Units(path))).toString();
}

bool IsOnePath(const QString& a, const QString& b)
{
    if (a == b || Base::IgnoresLetterCase())
        return true;
    return Base::IsSameFile(Base::NativePath(Base::Units(a)), Base::NativePath(Base::Units(b)));
}

/// Hidden, or a part of the registry.
bool IsSecretInHome(const QString& name)
{
    return name.startsWith(u'.') || name.startsWith(u"ntuser.", Qt::CaseInsensitive);
}

/// The shares by which Windows gives administrators whole drives: //server/C$.
bool IsAdministrativeShare(const QString& path)
{
    return Base::ThisSystem == Base::System::Windows && path.endsWith(u'$') &&
           Base::IsShareRoot(Base::Units(path));
}

void Refuse(PlaceFacts& facts, Remark reason)
{
    facts.refusal = reason;
    facts.refusalBegins = true;
}

void Apply(PlaceFacts& facts, PlaceKind kind)
{
    facts.isHome = kind == PlaceKind::OwnHome || kind == PlaceKind::OtherHome;
    facts.holdsHomes = kind == PlaceKind::Homes;
    switch (kind) {
    case PlaceKind::Open:
    case PlaceKind::OwnHome:
        facts.refusal = Remark::None;
        facts.refusalBegins = false;
        return;
    case PlaceKind::System:
        return Refuse(facts, Remark::SystemPlace);
    case PlaceKind::Secrets:
        return Refuse(facts, Remark::SecretPlace);
    case PlaceKind::OtherHome:
    case PlaceKind::Homes:
        return Refuse(facts, Remark::OtherHome);
    }
}

} // namespace

void PlaceMap::Add(const QString& folder, PlaceKind kind)
{
    EntryOf(folder).kind = kind;
    if (kind == PlaceKind::OwnHome)
        m_ownHomes.append(folder);
}

void PlaceMap::Mark(const QString& path, PlaceMark mark)
{
    EntryOf(path).marks |= mark;
}

PlaceFacts PlaceMap::OfFile(const QString& path)
{
    return Below(OfFolder(FolderAbove(path)), path);
}

PlaceFacts PlaceMap::OfFolder(const QString& folder)
{
    if (folder.isEmpty())
        return {};
    if (const auto known = m_folders.constFind(folder); known != m_folders.constEnd())
        return *known;
    const PlaceFacts facts = Below(OfFolder(FolderAbove(folder)), folder);
    return *m_folders.insert(folder, facts);
}

bool PlaceMap::HoldsOwnHome(const QString& folder) const
{
    return std::any_of(m_ownHomes.begin(), m_ownHomes.end(),
                       [&](const QString& home) { return IsInFolder(home, folder); });
}

PlaceMap::Entry& PlaceMap::EntryOf(const QString& path)
{
    m_folders.clear();
    const QString key = Folded(path);
    for (auto entry = m_entries.find(key); entry != m_entries.end() && entry.key() == key; ++entry)
        if (entry->path == path)
            return *entry;
    return *m_entries.insert(key, {path, std::nullopt, {}});
}

PlaceFacts PlaceMap::Below(const PlaceFacts& above, const QString& path) const
{
    PlaceFacts facts = {above.marks, above.refusal};
    if (above.holdsHomes) {
        Refuse(facts, Remark::OtherHome);
        facts.isHome = true;
    }
    if (above.isHome && IsSecretInHome(NameOf(path)))
        Refuse(facts, Remark::SecretPlace);
    if (IsAdministrativeShare(path))
        Refuse(facts, Remark::SystemPlace);
    PlaceMarks marks;
    const QString key = Folded(path);
    for (auto entry = m_entries.find(key); entry != m_entries.end() && entry.key() == key;
         ++entry) {
        if (!IsOnePath(entry->path, path))
            continue;
        if (entry->kind)
            Apply(facts, *entry->kind);
        marks |= entry->marks;
    }
    facts.marks |= marks;
    // A project is no secret to itself; what is secret below it stays so.
    if (marks & PlaceMark::Project)
        facts.refusal = Remark::None;
    return facts;
}

} // namespace Halvern::Jobs
