// SPDX-License-Identifier: Apache-2.0

#include "ImporterFixture.h"
#include "LogCapture.h"

namespace Halvern::Test {

using namespace Qt::Literals::StringLiterals;

/// Members that no intake makes but a host can: without a source, without a target, or unclean.
class UnusualMembers : public ImporterFixture
{
protected:
    UnusualMembers()
    {
        tree.File(u"src/a.tasm"_s);
        EXPECT_TRUE(importer.Initialize({Source(u"a.tasm"_s)}, Cloud(), false, {}, {}));
    }
    FileMappingPointer Add(const QString& source, const QString& target,
                           FileMapping::FileMappingFlag flags)
    {
        const auto mapping = std::make_shared<FileMapping>(source, target, 7);
        mapping->SetFlag(flags, true);
        importer.GetFileSet()->AddFile(mapping);
        return mapping;
    }

    FileLinkImporterImp importer{nullptr};
};

TEST_F(UnusualMembers, WithoutASourceAreNotAskedForLinks)
{
    Add(QString(), Cloud(u"x.tlk"_s), FileMapping::Selected);
    const PluginCallLog calls;
    const LogCapture log;
    EXPECT_TRUE(importer.ExtractFileLinks());
    EXPECT_EQ(Short(calls.Calls()), QStringList{u"GetFileLinks src/a.tasm"_s});
    EXPECT_TRUE(log.Lines().filter(u"ERROR"_s).isEmpty());
}

TEST_F(UnusualMembers, WithoutATargetFailTheUpdateOfTheDatabaseAndOthersAreWritten)
{
    Add(Source(u"b.tlk"_s), QString(), FileMapping::Selected | FileMapping::Copied);
    ASSERT_TRUE(importer.CopyFiles());
    EXPECT_FALSE(importer.UpdateSyncDatabase());
    EXPECT_NE(Database().GetSyncItem(Cloud(u"a.tasm"_s), true, 7, SyncServices::FileItem::ItemOnly),
              nullptr);
}

TEST_F(UnusualMembers, ThatOnlyLowerCasingMakesAlikeAreTwoItemsOfOneFolder)
{
    const QStringList names{u"\u0130.tlk"_s, u"i\u0307.tlk"_s};
    for (const QString& name : names) {
        tree.File(u"src/"_s + name);
        Add(Source(name), Cloud(name), FileMapping::Selected);
    }
    ASSERT_TRUE(importer.CopyFiles());
    EXPECT_TRUE(importer.UpdateSyncDatabase());
    for (const QString& name : names) {
        const auto item =
            Database().GetSyncItem(Cloud(name), true, 7, SyncServices::FileItem::ItemOnly);
        ASSERT_NE(item, nullptr) << name.toStdString();
        EXPECT_EQ(item->GetLocalPath(), Cloud(name));
    }
}

TEST_F(UnusualMembers, ThatVanishWhileTheyAreRewrittenKeepTheDateOfTheirLinks)
{
    // Its plug-in is asked to write what is no longer there.
    const auto mapping =
        Add(Source(u"c.tlk"_s), Cloud(u"c.tlk"_s), FileMapping::Selected | FileMapping::Copied);
    mapping->SetTargetFileLinks({{-1, u"1"_s, u"x.tlk"_s, {}}});
    mapping->SetTargetFileLinksExtractedAtFileDate(Time());
    tree.File(u"cloud/c.tlk"_s, "link 1 old\n");
    QObject::connect(&importer, &FileLinkImporterImp::FileModified, &importer,
                     [this](const QString&) { tree.Remove(u"cloud/c.tlk"_s); });
    EXPECT_TRUE(importer.RepathFile(mapping));
    EXPECT_FALSE(tree.Exists(u"cloud/c.tlk"_s));
    EXPECT_EQ(mapping->GetTargetFileLinksExtractedAtFileDate(), Time());
    EXPECT_TRUE(mapping->HasFlag(FileMapping::Repathed));
}

TEST_F(UnusualMembers, ThatAreHiddenFoldersFailWhereAFileIsInTheWay)
{
    tree.Folder(u"src/.h"_s).File(u"cloud/F"_s);
    Add(Source(u".h"_s), Cloud(u"F/.h"_s), FileMapping::Selected | FileMapping::Folder);
    const LogCapture log;
    EXPECT_TRUE(importer.CopyFiles());
    EXPECT_TRUE(log.Has(u"ERROR Failed to create folder %1"_s.arg(Cloud(u"F/.h"_s))));
    EXPECT_EQ(tree.Read(u"cloud/F"_s), "cloud/F");
}

} // namespace Halvern::Test
