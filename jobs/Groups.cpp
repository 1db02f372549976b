// SPDX-License-Identifier: Apache-2.0

#include "Groups.h"

#include "Paths.h"

#include "syncplugin/ReferenceIds.h"

#include <QtCore/QFileInfo>

#include <algorithm>

namespace Halvern::Jobs {

namespace {

QString Text(std::string_view text)
{
    return QString::fromUtf8(text.data(), qsizetype(text.size()));
}

bool IsCompanion(const QString& id)
{
    static const QString mark = Text(SyncPlugin::CompanionMark);
    return id.startsWith(mark);
}

/// The set that a link is of; empty for none.
QString SetOf(const QString& id)
{
    static const QString mark = Text(SyncPlugin::SetMark);
    return id.startsWith(mark) ? id.left(id.lastIndexOf(u'#')) : QString();
}

} // namespace

Groups::Groups(const JobFiles& files) : m_files(files)
{
    for (qsizetype place = 0; place < files.Size(); ++place)
        m_above.append(place);
    for (qsizetype place = 0; place < files.Size(); ++place) {
        QHash<QString, qsizetype> sets;
        for (const JobLink& link : files.At(place).links) {
            const QString set = SetOf(link.stored.RefId);
            if (link.member < 0 || (set.isEmpty() && !IsCompanion(link.stored.RefId)))
                continue;
            const qsizetype other = set.isEmpty() ? place : sets.value(set, link.member);
            sets.insert(set, other);
            m_bonds.append({other, link.member});
            m_above[RootOf(link.member)] = RootOf(other);
        }
    }
}

qsizetype Groups::RootOf(qsizetype place) const
{
    while (m_above.at(place) != place)
        place = m_above.at(place);
    return place;
}

QList<qsizetype> Groups::Of(qsizetype place) const
{
    QList<qsizetype> members;
    for (qsizetype other = 0; other < m_files.Size(); ++other)
        if (RootOf(other) == RootOf(place))
            members.append(other);
    return members;
}

bool Groups::StayTogether(const QList<qsizetype>& members,
                          const QHash<qsizetype, QString>& targets) const
{
    const auto keepsName = [&](qsizetype place) {
        return QFileInfo(targets.value(place)).fileName() ==
               QFileInfo(m_files.At(place).target).fileName();
    };
    return std::all_of(members.begin(), members.end(), keepsName) &&
           std::all_of(m_bonds.begin(), m_bonds.end(), [&](const auto& bond) {
               return !members.contains(bond.first) || !members.contains(bond.second) ||
                      WayFrom(targets.value(bond.first), targets.value(bond.second)) ==
                          WayFrom(m_files.At(bond.first).target, m_files.At(bond.second).target);
           });
}

} // namespace Halvern::Jobs
