// SPDX-License-Identifier: Apache-2.0

#include "plugins/LinkRecords.h"

#include <algorithm>

namespace Halvern::FileLink {

using SyncPlugin::FileLinkInfo;
using SyncPlugin::MaxLinkText;
using SyncPlugin::WideChar;

namespace {

void FillText(WideChar (&field)[MaxLinkText], const QString& text)
{
    const qsizetype length = std::min<qsizetype>(text.size(), MaxLinkText - 1);
    std::copy_n(reinterpret_cast<const WideChar*>(text.utf16()), length, field);
    field[length] = 0;
}

QString ReadText(const WideChar (&field)[MaxLinkText])
{
    const WideChar* end = std::find(field, field + MaxLinkText - 1, WideChar(0));
    return QString(reinterpret_cast<const QChar*>(field), end - field);
}

} // namespace

WideString ToWideString(const QString& text)
{
    return WideString(reinterpret_cast<const WideChar*>(text.utf16()), size_t(text.size()));
}

FileLinkInfo MakeFileLinkInfo(const QString& referenceId, const QString& path)
{
    FileLinkInfo link{};
    link.size = sizeof(FileLinkInfo);
    FillText(link.referenceId, referenceId);
    FillText(link.path, path);
    return link;
}

QString GetReferenceId(const FileLinkInfo& link)
{
    return ReadText(link.referenceId);
}

QString GetLinkPath(const FileLinkInfo& link)
{
    return ReadText(link.path);
}

void TerminateTexts(FileLinkInfo& link)
{
    link.referenceId[MaxLinkText - 1] = 0;
    link.path[MaxLinkText - 1] = 0;
}

} // namespace Halvern::FileLink
