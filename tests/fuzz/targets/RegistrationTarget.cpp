// SPDX-License-Identifier: Apache-2.0

#include "Scratch.h"
#include "Target.h"

#include "plugins/PluginManager.h"

namespace Halvern::Fuzz {

namespace {

using namespace FileLink;

/// One file declares one plug-in at most, says what is wrong with it otherwise, and means the same
/// when it is read again.
void Try(std::string_view input)
{
    const std::filesystem::path path = ScratchFolder() / "x.syncplugin";
    WriteFile(path, input);
    const QString file = QString::fromStdString(path.string());
    PluginManager manager;
    const bool isUsed = manager.LoadRegistrationFile(file);
    const qsizetype count = manager.Plugins().size();
    Require(count == (isUsed ? 1 : 0), "not one plug-in");
    Require(isUsed || !manager.RegistrationProblems().isEmpty(), "not used, and nobody says why");
    Require(manager.LoadRegistrationFile(file) == isUsed && manager.Plugins().size() == count,
            "another answer the second time");
    for (const Plugin* plugin : manager.Plugins()) {
        Require(!plugin->GetModule().isEmpty(), "a plug-in without a library");
        Require(manager.FindPluginByModule(plugin->GetModule()) == plugin, "a plug-in is lost");
        for (const QString& type : plugin->GetFileTypes())
            manager.FindPluginForFile(QStringLiteral("/a.") + type, plugin->GetType());
    }
}

const RegisteredTarget Registered("registration", Try);

} // namespace

} // namespace Halvern::Fuzz
