// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QString>
#include <QtCore/QStringList>

namespace Halvern::Cli {

/// Before anything else in main: text on standard output and standard error is UTF-8. When the
/// program exits a console is as it was.
void PrepareConsole();
/// The same at once, for a program that does not exit. From any thread.
void RestoreConsole();
/// Arguments that name files. Where the shell leaves patterns to the program, "*" and "?" in the
/// last part of one stand for the names they match, in their order; hidden ones are left out. A
/// pattern that matches nothing stays as it is.
QStringList ExpandPatterns(const QStringList& arguments);

} // namespace Halvern::Cli
