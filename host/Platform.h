#pragma once

#include <QtCore/QString>

namespace Halvern::Host {

/// Before the application object: text on standard output and standard error is UTF-8.
void PrepareConsole();
bool IsStandardErrorTerminal();
/// Columns of the terminal on standard error; 80 when unknown.
int TerminalWidth();
/// The machine's folder for data of all users, where plug-ins of other products are registered.
QString CommonDataFolder();

} // namespace Halvern::Host
