// SPDX-License-Identifier: Apache-2.0

#include "ZipBuilder.h"

#include "FormatFixture.h"

#include <numeric>

namespace Halvern::Test {

namespace {

quint32 Crc32(const QByteArray& bytes)
{
    quint32 crc = 0xFFFFFFFF;
    for (const char byte : bytes) {
        crc ^= static_cast<unsigned char>(byte);
        for (int bit = 0; bit < 8; ++bit)
            crc = (crc >> 1) ^ ((crc & 1U) != 0 ? 0xEDB88320 : 0);
    }
    return ~crc;
}

QByteArray Packed(const ZipMember& member)
{
    if (!member.deflated)
        return member.content;
    const QByteArray wrapped = qCompress(member.content);
    return wrapped.mid(6, wrapped.size() - 10); // between a length with a header and a checksum
}

QByteArray Sizes(const ZipMember& member)
{
    return LittleEndian(Crc32(member.content)) +
           LittleEndian(static_cast<quint32>(Packed(member).size())) +
           LittleEndian(static_cast<quint32>(member.content.size()));
}

/// From the version up to the time, which are equal in local header and record.
QByteArray Start(const ZipMember& member)
{
    return LittleEndian16(20) + LittleEndian16(member.streamed ? 8 : 0) +
           LittleEndian16(member.deflated ? 8 : 0) + LittleEndian16(0x6C21) +
           LittleEndian16(0x5975);
}

QByteArray Local(const ZipMember& member)
{
    return "PK\3\4" + Start(member) + (member.streamed ? QByteArray(12, '\0') : Sizes(member)) +
           LittleEndian16(static_cast<quint32>(member.name.size())) +
           LittleEndian16(static_cast<quint32>(member.extra.size())) + member.name + member.extra +
           Packed(member) + (member.streamed ? "PK\7\10" + Sizes(member) : QByteArray());
}

QByteArray CentralRecord(const ZipMember& member, qsizetype offset)
{
    return "PK\1\2" + LittleEndian16(0x0314) + Start(member) + Sizes(member) +
           LittleEndian16(static_cast<quint32>(member.name.size())) +
           LittleEndian16(static_cast<quint32>(member.extra.size())) +
           LittleEndian16(static_cast<quint32>(member.comment.size())) + LittleEndian16(0) +
           LittleEndian16(1) + LittleEndian(0x81A40000) +
           LittleEndian(static_cast<quint32>(offset)) + member.name + member.extra + member.comment;
}

} // namespace

QByteArray LittleEndian16(quint32 number)
{
    return LittleEndian(number).left(2);
}

QByteArray Zip(const QList<ZipMember>& members, const QByteArray& comment)
{
    QList<qsizetype> order(members.size());
    std::iota(order.begin(), order.end(), 0);
    return Zip(members, comment, order);
}

QByteArray Zip(const QList<ZipMember>& members, const QByteArray& comment,
               const QList<qsizetype>& recordOrder)
{
    QByteArray archive;
    QList<qsizetype> offsets;
    for (const ZipMember& member : members) {
        offsets.append(archive.size());
        archive += Local(member);
    }
    QByteArray records;
    for (const qsizetype index : recordOrder)
        records += CentralRecord(members.at(index), offsets.at(index));
    const auto count = static_cast<quint32>(members.size());
    return archive + records + "PK\5\6" + LittleEndian(0) + LittleEndian16(count) +
           LittleEndian16(count) + LittleEndian(static_cast<quint32>(records.size())) +
           LittleEndian(static_cast<quint32>(archive.size())) +
           LittleEndian16(static_cast<quint32>(comment.size())) + comment;
}

} // namespace Halvern::Test
