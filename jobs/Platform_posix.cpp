// SPDX-License-Identifier: Apache-2.0

#include "Platform.h"

namespace Halvern::Jobs {

Qt::CaseSensitivity FileNameCase()
{
    return Qt::CaseSensitive;
}

bool IsPosixAbsolutePath(const QString& path)
{
    return path.startsWith(u'/') && !(path.size() > 1 && (path[1] == u'/' || path[1] == u'\\'));
}

QString CommonDataFolder()
{
    return QStringLiteral("/usr/share");
}

} // namespace Halvern::Jobs
