// SPDX-License-Identifier: Apache-2.0

// Placeholders are filled one after the other, as in every line of the module: what a path holds of
// them is filled as well.

#include "PluginsFixture.h"

#include "fileset/FileMappingRef.h"

#include <gtest/gtest.h>

namespace {

using namespace Halvern::FileLink;
using namespace Halvern::Test;
using Halvern::SyncServices::FileMapping;

using LogPlaceholders = PluginsFixture;

TEST_F(LogPlaceholders, InASourcePathTakeTheTargetOfADumpedMapping)
{
    FileMappingRef node(QString(), QString(),
                        std::make_shared<FileMapping>(QStringLiteral("D:/p/50%2.tasm"),
                                                      QStringLiteral("F:/a.tasm"), 1));
    manager.DumpFileMapping(&node);
    EXPECT_EQ(log.Lines().last(), QStringLiteral("TRACE \"D:/p/50F:/a.tasm.tasm\" ==> "
                                                 "\"F:/a.tasm\""));
}

TEST_F(LogPlaceholders, InAnExtensionTakeTheModulesFound)
{
    RegisterResolver(QStringLiteral("a.so"), QStringLiteral("*"));
    manager.FindPluginForFile(QStringLiteral("x.%4"), PluginType::FileLinkResolver);
    EXPECT_EQ(
        log.Lines().last(),
        QStringLiteral("DEBUG Found 1 File Link Resolver plugin(s) for file type a.so: a.so"));
}

TEST_F(LogPlaceholders, InAModuleTakeTheFileOfALayout)
{
    const QString module = QStringLiteral("a%2.so");
    tree.Folder(QStringLiteral("lib"));
    ASSERT_TRUE(QFile::copy(TestPluginFolder() + u'/' + TestLayoutModule(),
                            tree.Path(QStringLiteral("lib/") + module)));
    manager.AddPluginSearchPaths({tree.Path(QStringLiteral("lib"))});
    RegisterLayout(module, QStringLiteral("tasm"));
    FileLayoutContext context;
    const auto node = std::make_shared<FileMappingRef>(
        QString(), QString(),
        std::make_shared<FileMapping>(QStringLiteral("D:/b.tasm"), QStringLiteral("F:/b.tasm"), 1));
    EXPECT_TRUE(manager.AssignTargetPaths(node, &context));
    EXPECT_TRUE(log.Has(QStringLiteral("DEBUG Plugin aD:/b.tasm.so assigned target paths "
                                       "successfully for file D:/b.tasm")));
}

} // namespace
