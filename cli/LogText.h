// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QString>

#include <string>

namespace Halvern::Cli {

// log4cplus strings are wide on Windows and UTF-8 elsewhere; the overload that fits is chosen.

inline QString FromLog(const std::string& text)
{
    return QString::fromStdString(text);
}

inline QString FromLog(const std::wstring& text)
{
    return QString::fromStdWString(text);
}

} // namespace Halvern::Cli
