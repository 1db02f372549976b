// SPDX-License-Identifier: Apache-2.0

#include "services/StoredCopies.h"

#include "base/Directory.h"
#include "base/FileStatus.h"
#include "services/Paths.h"
#include "services/Platform.h"
#include "services/StoreNames.h"

#include <QtCore/QList>

#include <algorithm>
#include <tuple>

namespace Halvern::SyncServices {

void StoredCopies::List(const QString& folder)
{
    QList<Copy> copies;
    Base::VisitNames(Platform::NativePath(folder), [&](const std::string& utf8) {
        const QString name = QString::fromStdString(utf8);
        if (!StoreNames::IsCopyName(name))
            return true;
        const Base::FileStatus status =
            Base::ReadLinkStatus(Platform::NativePath(JoinPath(folder, name)));
        if (status.kind == Base::FileKind::File)
            copies.append({name, static_cast<qint64>(status.size), status.modified});
        return true;
    });
    std::sort(copies.begin(), copies.end(), [](const Copy& a, const Copy& b) {
        return std::tie(a.saved, a.name) < std::tie(b.saved, b.name);
    });
    *this = StoredCopies();
    for (const Copy& copy : copies)
        Record(copy);
}

void StoredCopies::Record(const Copy& copy)
{
    Forget(copy.name);
    m_copies.emplace(m_next, copy);
    m_order.insert(copy.name, m_next++);
    m_total += copy.size;
}

void StoredCopies::Forget(const QString& name)
{
    const auto order = m_order.constFind(name);
    if (order == m_order.constEnd())
        return;
    const auto copy = m_copies.find(*order);
    m_total -= copy->second.size;
    m_copies.erase(copy);
    m_order.erase(order);
}

qint64 StoredCopies::SizeOf(const QString& name) const
{
    const auto order = m_order.constFind(name);
    return order == m_order.constEnd() ? 0 : m_copies.at(*order).size;
}

} // namespace Halvern::SyncServices
