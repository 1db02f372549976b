// SPDX-License-Identifier: Apache-2.0

// Names that hold what the module's lines have as placeholders.

#include "PluginsFixture.h"

#include "fileset/FileMappingRef.h"

#include <gtest/gtest.h>

namespace {

using namespace Halvern::FileLink;
using namespace Halvern::Test;
using Halvern::SyncServices::FileMapping;

using PlaceholdersInNames = PluginsFixture;

TEST_F(PlaceholdersInNames, OfASourceLeaveOneLineForADumpedMapping)
{
    FileMappingRef node(QString(), QString(),
                        std::make_shared<FileMapping>(QStringLiteral("D:/p/50%2.tasm"),
                                                      QStringLiteral("F:/a.tasm"), 1));
    manager.DumpFileMapping(&node);
    EXPECT_EQ(log.Lines().filter(QStringLiteral("TRACE \"D:/p/50")).size(), 1);
    EXPECT_TRUE(log.Lines().last().endsWith(QStringLiteral("\" ==> \"F:/a.tasm\"")));
}

TEST_F(PlaceholdersInNames, OfAnExtensionHideNoPlugin)
{
    RegisterResolver(QStringLiteral("a.so"), QStringLiteral("*"));
    EXPECT_EQ(
        Modules(manager.FindPluginForFile(QStringLiteral("x.%4"), PluginType::FileLinkResolver)),
        QStringList{QStringLiteral("a.so")});
    EXPECT_TRUE(log.Lines().last().startsWith(
        QStringLiteral("DEBUG Found 1 File Link Resolver plugin(s) for file type ")));
}

TEST_F(PlaceholdersInNames, OfAModuleLetItsLayoutAssignPaths)
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
    EXPECT_EQ(log.Lines().filter(QStringLiteral(" assigned target paths successfully ")).size(), 1);
}

} // namespace
