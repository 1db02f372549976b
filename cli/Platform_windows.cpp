// SPDX-License-Identifier: Apache-2.0

#include "Platform.h"

#include <QtCore/QDir>
#include <QtCore/QRegularExpression>

#include <algorithm>
#include <cstdlib>

#include <windows.h>

namespace Halvern::Cli {

namespace {

/// The console belongs to the shell, and the programs that follow meet it as this one left it.
UINT codePageBefore = 0;
DWORD errorModeBefore = 0;
bool isCodePageChanged = false;
bool isErrorModeChanged = false;

/// "*.*" stands for every name, as it always has on Windows.
QRegularExpression NamePattern(const QString& pattern)
{
    QString expression =
        QRegularExpression::escape(pattern == u"*.*" ? QStringLiteral("*") : pattern);
    expression.replace(QStringLiteral("\\*"), QStringLiteral(".*"))
        .replace(QStringLiteral("\\?"), QStringLiteral("."));
    return QRegularExpression(QRegularExpression::anchoredPattern(expression),
                              QRegularExpression::CaseInsensitiveOption);
}

QStringList ExpandPattern(const QString& argument)
{
    const qsizetype begin = std::max(argument.lastIndexOf(u'/'), argument.lastIndexOf(u'\\')) + 1;
    const QString folder = argument.left(begin);
    const QString pattern = argument.mid(begin);
    if (!pattern.contains(u'*') && !pattern.contains(u'?'))
        return {argument};
    // The system's own search would also match the short names that files have besides.
    const QStringList names = QDir(QDir::fromNativeSeparators(folder))
                                  .entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot,
                                             QDir::Name | QDir::IgnoreCase)
                                  .filter(NamePattern(pattern));
    QStringList paths;
    for (const QString& name : names)
        paths.append(folder + name);
    return paths.isEmpty() ? QStringList{argument} : paths;
}

} // namespace

void PrepareConsole()
{
    codePageBefore = GetConsoleOutputCP();
    isCodePageChanged = codePageBefore != 0 && SetConsoleOutputCP(CP_UTF8);
    // The progress line clears itself with an escape sequence.
    const HANDLE error = GetStdHandle(STD_ERROR_HANDLE);
    isErrorModeChanged =
        GetConsoleMode(error, &errorModeBefore) &&
        SetConsoleMode(error, errorModeBefore | ENABLE_VIRTUAL_TERMINAL_PROCESSING);
    std::atexit(RestoreConsole);
}

void RestoreConsole()
{
    if (isErrorModeChanged)
        SetConsoleMode(GetStdHandle(STD_ERROR_HANDLE), errorModeBefore);
    if (isCodePageChanged)
        SetConsoleOutputCP(codePageBefore);
}

QStringList ExpandPatterns(const QStringList& arguments)
{
    QStringList expanded;
    for (const QString& argument : arguments)
        expanded.append(ExpandPattern(argument));
    return expanded;
}

} // namespace Halvern::Cli
