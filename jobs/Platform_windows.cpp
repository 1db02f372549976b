// SPDX-License-Identifier: Apache-2.0

#include "Platform.h"

#include <QtCore/QDir>

namespace Halvern::Jobs {

Qt::CaseSensitivity FileNameCase()
{
    return Qt::CaseInsensitive;
}

bool IsPosixAbsolutePath(const QString&)
{
    return false;
}

QString CommonDataFolder()
{
    return QDir::fromNativeSeparators(qEnvironmentVariable("ProgramData"));
}

} // namespace Halvern::Jobs
