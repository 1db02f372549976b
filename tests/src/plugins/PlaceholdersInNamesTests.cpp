// SPDX-License-Identifier: Apache-2.0

// Names that hold what the module's lines have as placeholders.

#include "PluginsFixture.h"

#include "fileset/FileMappingRef.h"

#include <gtest/gtest.h>

namespace {

using namespace Halvern::FileLink;
using namespace Halvern::Test;
using namespace Qt::StringLiterals;
using Halvern::SyncServices::FileMapping;

using PlaceholdersInNames = PluginsFixture;

TEST_F(PlaceholdersInNames, OfASourceLeaveOneLineForADumpedMapping)
{
    FileMappingRef node(QString(), QString(),
                        std::make_shared<FileMapping>(u"D:/p/50%2.tasm"_s, u"F:/a.tasm"_s, 1));
    manager.DumpFileMapping(&node);
    EXPECT_EQ(log.Lines().filter(u"TRACE \"D:/p/50"_s).size(), 1);
    EXPECT_TRUE(log.Lines().last().endsWith(u"\" ==> \"F:/a.tasm\""_s));
}

TEST_F(PlaceholdersInNames, OfAnExtensionHideNoPlugin)
{
    RegisterResolver(u"a.so"_s, u"*"_s);
    EXPECT_EQ(Modules(manager.FindPluginForFile(u"x.%4"_s, PluginType::FileLinkResolver)),
              QStringList{u"a.so"_s});
    EXPECT_TRUE(log.Lines().last().startsWith(
        u"DEBUG Found 1 File Link Resolver plugin(s) for file type "_s));
}

TEST_F(PlaceholdersInNames, OfAModuleLetItsLayoutAssignPaths)
{
    const QString module = u"a%2.so"_s;
    tree.Folder(u"lib"_s);
    ASSERT_TRUE(
        QFile::copy(TestPluginFolder() + u'/' + TestLayoutModule(), tree.Path(u"lib/"_s + module)));
    manager.AddPluginSearchPaths({tree.Path(u"lib"_s)});
    RegisterLayout(module, u"tasm"_s);
    FileLayoutContext context;
    const auto node = std::make_shared<FileMappingRef>(
        QString(), QString(), std::make_shared<FileMapping>(u"D:/b.tasm"_s, u"F:/b.tasm"_s, 1));
    EXPECT_TRUE(manager.AssignTargetPaths(node, &context));
    EXPECT_EQ(log.Lines().filter(u" assigned target paths successfully "_s).size(), 1);
}

} // namespace
