// SPDX-License-Identifier: Apache-2.0

#include "isolation/Messages.h"

#include <QtCore/QtEndian>

#include <cstring>

namespace Halvern::Isolation {

using SyncPlugin::FileLinkInfo;
using SyncPlugin::WideChar;

QByteArray MessageWriter::Bytes()
{
    qToBigEndian(std::uint32_t(m_bytes.size() - LengthSize), m_bytes.data());
    return m_bytes;
}

std::uint32_t LengthOf(const char (&bytes)[LengthSize])
{
    return qFromBigEndian<std::uint32_t>(bytes);
}

QByteArray PackLinks(const FileLinkInfo* links, int count)
{
    if (!links || count <= 0)
        return {};
    return {reinterpret_cast<const char*>(links), qsizetype(sizeof(FileLinkInfo)) * count};
}

std::vector<FileLinkInfo> UnpackLinks(const QByteArray& bytes)
{
    if (bytes.size() % qsizetype(sizeof(FileLinkInfo)) != 0)
        return {};
    std::vector<FileLinkInfo> links(std::size_t(bytes.size()) / sizeof(FileLinkInfo));
    if (!links.empty())
        std::memcpy(links.data(), bytes.constData(), std::size_t(bytes.size()));
    return links;
}

QString ToText(const WideChar* text)
{
    return text ? QString(reinterpret_cast<const QChar*>(text)) : QString();
}

std::basic_string<WideChar> ToWide(const QString& text)
{
    return {reinterpret_cast<const WideChar*>(text.utf16()), std::size_t(text.size())};
}

} // namespace Halvern::Isolation
