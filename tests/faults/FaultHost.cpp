// SPDX-License-Identifier: Apache-2.0

// A program that runs one import over a tree, as a host does, to be killed from outside:
//
//     fault_host <tree> <plug-in folder> <end at poll> <move> <source>...
//
// The tree has "cloud", "sync.db" and registration files in "plugins"; targets are in cloud/T.
// Files that exist there are replaced. With a number above 0 it ends itself at that poll, with 99.
// Exits with 0 when the copy stage ran to its end.

#include "filelink/FileLinkImporter.h"
#include "filelink/FileLinkManager.h"

#include "syncservices/FolderManager.h"

#include <QtCore/QCoreApplication>

#include <cstdlib>

namespace {

using namespace Halvern;
using namespace Qt::StringLiterals;
using SyncServices::Global;

/// Ends the process at a poll, as hard as a kill from outside does: nothing is flushed or unwound.
class EndAtPoll : public FileLink::ICancelController
{
public:
    explicit EndAtPoll(int poll) : m_left(poll) {}

    bool IsCancelRequested() override
    {
        if (m_left > 0 && --m_left == 0)
            std::_Exit(99);
        return false;
    }

private:
    int m_left;
};

SyncServices::ServicesSettings SettingsFor(const QString& tree)
{
    SyncServices::ServicesSettings settings;
    settings.cloudCacheFolder = tree + u"/cloud"_s;
    settings.databaseFile = tree + u"/sync.db"_s;
    settings.authenticationConfigurationId = 7;
    return settings;
}

bool Import(const QStringList& sources, const QString& target, Global::CopyOption options,
            int endAtPoll)
{
    FileLink::FileLinkImporter importer(std::make_shared<EndAtPoll>(endAtPoll));
    // Stage by stage: the one-call import would rename what it must replace here.
    if (!importer.Initialize(sources, target, false, options, {}) || !importer.ExtractFileLinks())
        return false;
    importer.AssignTargetPaths();
    importer.MarkCollisions();
    importer.ResolveCollisions();
    const bool copied = importer.CopyFiles();
    importer.RepathTargetFiles();
    importer.UpdateSyncDatabase();
    return copied;
}

} // namespace

int main(int argc, char** argv)
{
    const QCoreApplication application(argc, argv);
    const QStringList arguments = application.arguments();
    if (arguments.size() < 6)
        return 2;
    const QString tree = arguments[1];
    SyncFolderManagerLib::FolderManager::Configure(SettingsFor(tree));
    FileLink::FileLinkManager::Initialize();
    FileLink::FileLinkManager* const manager = FileLink::FileLinkManager::GetInstance();
    manager->AddPluginRegistrationFolders({tree + u"/plugins"_s});
    manager->AddPluginSearchPaths({arguments[2]});
    const bool move = arguments[4].toInt() != 0;
    const bool done = Import(arguments.mid(5), tree + u"/cloud/T"_s,
                             move ? Global::MoveFiles : Global::NoCopyOption, arguments[3].toInt());
    FileLink::FileLinkManager::Uninitialize();
    return done ? 0 : 1;
}
