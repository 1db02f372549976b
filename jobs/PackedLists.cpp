// SPDX-License-Identifier: Apache-2.0

#include "PackedLists.h"

#include <stdexcept>

namespace Halvern::Jobs {

namespace {

using SyncServices::FileLink;

void AppendNumber(QByteArray& bytes, quint64 number)
{
    for (; number >= 0x80; number >>= 7)
        bytes.append(static_cast<char>(number | 0x80));
    bytes.append(static_cast<char>(number));
}

void AppendText(QByteArray& bytes, const QString& text)
{
    if (text.isNull()) {
        AppendNumber(bytes, 0);
        return;
    }
    const QByteArray coded = TextToBytes(text);
    AppendNumber(bytes, static_cast<quint64>(coded.size()) + 1);
    bytes.append(coded);
}

/// Takes apart what the functions above made.
class Unpacker
{
public:
    explicit Unpacker(QByteArrayView bytes) : m_left(bytes) {}

    quint64 Number()
    {
        quint64 number = 0;
        for (int shift = 0; shift < 64 && !m_left.isEmpty(); shift += 7) {
            const auto byte = static_cast<quint8>(m_left.front());
            m_left = m_left.sliced(1);
            number |= static_cast<quint64>(byte & 0x7F) << shift;
            if (byte < 0x80)
                return number;
        }
        Refuse();
    }
    /// How many elements follow: none is smaller than a byte.
    qsizetype Count() { return Fitting(Number()); }
    QString Text()
    {
        const quint64 size = Number();
        if (size == 0)
            return {};
        const qsizetype bytes = Fitting(size - 1);
        const QString text = TextFromBytes(m_left.first(bytes));
        m_left = m_left.sliced(bytes);
        return text;
    }
    void RequireEnd() const
    {
        if (!m_left.isEmpty())
            Refuse();
    }

private:
    [[noreturn]] static void Refuse()
    {
        throw std::runtime_error("The links of a record are damaged.");
    }
    qsizetype Fitting(quint64 number) const
    {
        if (number > static_cast<quint64>(m_left.size()))
            Refuse();
        return static_cast<qsizetype>(number);
    }

    QByteArrayView m_left;
};

/// Where the first half of a surrogate pair stands alone in the bytes, -1 for nowhere: three bytes
/// that are no UTF-8.
qsizetype FindHalf(QByteArrayView bytes, qsizetype from)
{
    for (qsizetype i = from; i + 2 < bytes.size(); ++i)
        if (static_cast<quint8>(bytes[i]) == 0xED && static_cast<quint8>(bytes[i + 1]) >= 0xA0)
            return i;
    return -1;
}

QChar HalfAt(QByteArrayView bytes, qsizetype at)
{
    return QChar(
        static_cast<char16_t>(0xD000 | ((bytes[at + 1] & 0x3F) << 6) | (bytes[at + 2] & 0x3F)));
}

bool IsPairAt(QStringView text, qsizetype at)
{
    return text[at].isHighSurrogate() && at + 1 < text.size() && text[at + 1].isLowSurrogate();
}

void AppendHalf(QByteArray& bytes, QChar half)
{
    const char16_t unit = half.unicode();
    bytes.append(static_cast<char>(0xED));
    bytes.append(static_cast<char>(0x80 | ((unit >> 6) & 0x3F)));
    bytes.append(static_cast<char>(0x80 | (unit & 0x3F)));
}

/// Qt leaves out a first U+FEFF, which it takes for a mark.
QString FromUtf8(QByteArrayView bytes)
{
    const QByteArray mark = QByteArrayLiteral("\xEF\xBB\xBF");
    return bytes.startsWith(mark) ? QString::fromUtf8(mark + bytes.toByteArray())
                                  : QString::fromUtf8(bytes);
}

} // namespace

QByteArray TextToBytes(const QString& text)
{
    if (text.isValidUtf16())
        return text.toUtf8();
    QByteArray bytes;
    for (qsizetype i = 0; i < text.size(); ++i) {
        if (IsPairAt(text, i))
            bytes.append(QStringView(text).sliced(i++, 2).toUtf8());
        else if (text[i].isSurrogate())
            AppendHalf(bytes, text[i]);
        else
            bytes.append(QStringView(text).sliced(i, 1).toUtf8());
    }
    return bytes;
}

QString TextFromBytes(QByteArrayView bytes)
{
    qsizetype half = FindHalf(bytes, 0);
    if (half < 0)
        return FromUtf8(bytes);
    QString text;
    qsizetype done = 0;
    for (; half >= 0; half = FindHalf(bytes, done)) {
        text += FromUtf8(bytes.sliced(done, half - done));
        text += HalfAt(bytes, half);
        done = half + 3;
    }
    return text + FromUtf8(bytes.sliced(done));
}

QByteArray PackLinks(const QList<FileLink>& links)
{
    QByteArray bytes;
    AppendNumber(bytes, static_cast<quint64>(links.size()));
    for (const FileLink& link : links) {
        AppendNumber(bytes, static_cast<quint32>(link.ItemId) + 1U);
        AppendText(bytes, link.RefId);
        AppendText(bytes, link.Path);
        AppendText(bytes, link.CloudItemId);
    }
    return bytes;
}

QByteArray PackTexts(const QStringList& texts)
{
    QByteArray bytes;
    AppendNumber(bytes, static_cast<quint64>(texts.size()));
    for (const QString& text : texts)
        AppendText(bytes, text);
    return bytes;
}

QList<FileLink> UnpackLinks(QByteArrayView bytes)
{
    Unpacker unpacker(bytes);
    QList<FileLink> links(unpacker.Count());
    for (FileLink& link : links) {
        link.ItemId = static_cast<int>(static_cast<quint32>(unpacker.Number()) - 1U);
        link.RefId = unpacker.Text();
        link.Path = unpacker.Text();
        link.CloudItemId = unpacker.Text();
    }
    unpacker.RequireEnd();
    return links;
}

QStringList UnpackTexts(QByteArrayView bytes)
{
    Unpacker unpacker(bytes);
    QStringList texts(unpacker.Count());
    for (QString& text : texts)
        text = unpacker.Text();
    unpacker.RequireEnd();
    return texts;
}

} // namespace Halvern::Jobs
