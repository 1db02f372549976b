// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QHash>
#include <QtCore/QString>

#include <map>

namespace Halvern::SyncServices {

/// What a base store's folder holds, as it was when it was listed last and with what was added
/// since: in the order in which it was saved, oldest first.
class StoredCopies
{
public:
    struct Copy
    {
        QString name;
        qint64 size = 0;
        /// When it was saved: nanoseconds since 1970, by the clock of the disk.
        qint64 saved = 0;
    };

    void List(const QString& folder);
    /// As the newest one, unless it is there under the same name; then that is forgotten.
    void Record(const Copy& copy);
    void Forget(const QString& name);

    /// In their order; the numbers have no meaning.
    const std::map<quint64, Copy>& All() const { return m_copies; }
    qint64 Total() const { return m_total; }
    /// 0 for none of that name.
    qint64 SizeOf(const QString& name) const;

private:
    std::map<quint64, Copy> m_copies;
    QHash<QString, quint64> m_order;
    quint64 m_next = 0;
    qint64 m_total = 0;
};

} // namespace Halvern::SyncServices
