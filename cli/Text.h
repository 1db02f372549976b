// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QString>

#include <string>

namespace Halvern::Cli {

// Strings of the libraries that know no QString: UTF-8, and wide for log4cplus on Windows.

inline QString Text(const std::string& text)
{
    return QString::fromStdString(text);
}

inline QString Text(const std::wstring& text)
{
    return QString::fromStdWString(text);
}

} // namespace Halvern::Cli
