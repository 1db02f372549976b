// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "CollectedProblems.h"
#include "FileTree.h"
#include "LogCapture.h"
#include "plugins/PluginManager.h"
#include "stages/StageContext.h"

#include <gtest/gtest.h>

namespace Halvern::Test {

/// Services over a tree whose cloud cache folder is "cloud": none of the platform library runs.
class TreeServices : public FileLink::IStageServices
{
public:
    explicit TreeServices(const FileTree& tree);

    QString CloudCacheFolder() const override { return m_folder; }
    bool IsInCloudCacheFolder(const QString& path) const override;
    QString ConvertCloudCacheFolderPath(const QString& path) const override { return path; }
    QString CloudPath(const QString& path) const override;
    int AuthenticationId() const override { return 7; }
    std::shared_ptr<SyncServices::SyncDatabase> Database() const override { return database; }
    std::shared_ptr<SyncServices::SyncItem> RootItem(const QString& folder) const override;
    FileLink::PluginManager* Plugins() const override { return plugins.get(); }
    void SaveBaseFile(const QString& path) const override { saved.append(path); }

    std::shared_ptr<SyncServices::SyncDatabase> database;
    std::unique_ptr<FileLink::PluginManager> plugins = std::make_unique<FileLink::PluginManager>();
    mutable QStringList saved;

private:
    QString m_folder;
};

/// One stage alone: a context filled by hand, the test resolver for "tasm" and "tlk" files, and the
/// problems that it reports.
class StageFixture : public ::testing::Test
{
protected:
    using FileMapping = SyncServices::FileMapping;
    using FileMappingPointer = std::shared_ptr<FileMapping>;

    StageFixture();

    QString Source(const QString& relative) const { return tree.Path("src/" + relative); }
    QString Cloud(const QString& relative) const { return tree.Path("cloud/" + relative); }
    /// A member of the context's set. The source lies in "src"; an empty target is none.
    FileMappingPointer Add(const QString& source, const QString& target,
                           FileMapping::FileMappingFlag flags = FileMapping::Selected);
    static void Link(const FileMappingPointer& holder, const QString& path);
    /// A real database in the tree.
    void OpenDatabase();

    FileTree tree;
    std::shared_ptr<TreeServices> services;
    std::shared_ptr<CollectedProblems> problems = std::make_shared<CollectedProblems>();
    FileLink::FileCopyHistory history;
    FileLink::StageContext context;
    LogCapture log;
};

} // namespace Halvern::Test
