// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QList>

namespace Halvern::Test {

/// One file of a ZIP archive that a test makes.
struct ZipMember
{
    QByteArray name;
    QByteArray content;
    bool deflated = true;
    /// Sizes and checksum stand after the data, as in archives written to a stream.
    bool streamed = false;
    QByteArray comment = {};
    QByteArray extra = {};
};

/// The archive of these files, their records in the same order.
QByteArray Zip(const QList<ZipMember>& members, const QByteArray& comment = {});
/// Their records in an order of their own: indices of `members`.
QByteArray Zip(const QList<ZipMember>& members, const QByteArray& comment,
               const QList<qsizetype>& recordOrder);

QByteArray LittleEndian16(quint32 number);

} // namespace Halvern::Test
