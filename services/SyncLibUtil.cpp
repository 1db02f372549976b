// SPDX-License-Identifier: Apache-2.0

#include "syncservices/SyncLibUtil.h"

#include "services/Platform.h"
#include "syncservices/FolderManager.h"

namespace Halvern::SyncServices {

using SyncFolderManagerLib::FolderManager;

namespace {

/// The text after the last dot of the file name; nothing without a dot.
QStringView Extension(const QString& path)
{
    for (qsizetype i = path.size() - 1; i >= 0; --i) {
        const QChar character = path.at(i);
        if (character == u'.')
            return QStringView(path).mid(i + 1);
        if (character == u'/' || character == u'\\')
            break;
    }
    return {};
}

/// The length of "scheme:" at the start of a path. One letter alone is a drive.
qsizetype SchemeLength(QStringView path)
{
    qsizetype length = 0;
    for (const QChar character : path) {
        const ushort code = character.toLower().unicode();
        const bool letter = code >= u'a' && code <= u'z';
        const bool other =
            (code >= u'0' && code <= u'9') || code == u'+' || code == u'-' || code == u'.';
        if (!letter && (length == 0 || !other))
            break;
        ++length;
    }
    return length >= 2 && length < path.size() && path.at(length) == u':' ? length + 1 : 0;
}

/// The end of a non-empty name that starts at `from`; -1 when there is none.
qsizetype EndOfName(const QString& path, qsizetype from)
{
    if (from >= path.size() || path.at(from) == u'/')
        return -1;
    const qsizetype end = path.indexOf(u'/', from);
    return end < 0 ? path.size() : end;
}

/// The length of the server root of a path with slashes; 0 when there is none.
qsizetype ServerRootLength(const QString& path)
{
    const qsizetype scheme = SchemeLength(path);
    if (QStringView(path).mid(scheme, 2) != u"//")
        return 0;
    const qsizetype host = EndOfName(path, scheme + 2);
    if (scheme > 0 || host < 0)
        return qMax<qsizetype>(host, 0);
    return qMax<qsizetype>(EndOfName(path, host + 1), 0);
}

} // namespace

bool SyncLibUtil::IsInFileTypeList(const QString& path, const QStringList& types)
{
    const QStringView extension = Extension(path);
    for (const QString& text : types) {
        QStringView type = QStringView(text).trimmed();
        if (type == u"*")
            return true;
        if (type.startsWith(u"*."))
            type = type.mid(2);
        else if (type.startsWith(u'.'))
            type = type.mid(1);
        if (!type.isEmpty() && type.compare(extension, Qt::CaseInsensitive) == 0)
            return true;
    }
    return false;
}

void SyncLibUtil::SplitServerPath(const QString& path, QString& serverRoot, QString& rest,
                                  bool keepSeparator)
{
    QString slashes = path;
    slashes.replace(u'\\', u'/');
    const qsizetype length = ServerRootLength(slashes);
    serverRoot = slashes.left(length);
    rest = slashes.mid(length);
    if (length == 0 || rest.isEmpty())
        return;
    qsizetype separators = 0;
    while (separators < rest.size() && rest.at(separators) == u'/')
        ++separators;
    rest = rest.mid(keepSeparator ? separators - 1 : separators);
}

QString SyncLibUtil::ExtractServerRoot(const QString& path, bool keepSeparator)
{
    QString root;
    QString rest;
    SplitServerPath(path, root, rest, keepSeparator);
    return root;
}

QString SyncLibUtil::GetSyncServiceExecutableFolderPath()
{
    const FolderManager* manager = FolderManager::GetInstance();
    if (manager != nullptr && !manager->GetSettings().serviceFolder.isEmpty())
        return manager->GetSettings().serviceFolder;
    return Platform::ProgramFolder();
}

} // namespace Halvern::SyncServices
