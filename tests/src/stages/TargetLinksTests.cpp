// SPDX-License-Identifier: Apache-2.0

#include "CopyingFixture.h"

namespace Halvern::Test {

namespace {

/// a.tlk goes to cloud/A/a.tlk; each test says what it links and what else is in the set.
class TargetLinks : public CopyingFixture
{
protected:
    TargetLinks()
    {
        tree.File("src/a.tlk", "").File("cloud/A/a.tlk", "");
        tree.Touch("cloud/A/a.tlk", modified);
    }

    FileMappingPointer AddHolder(const FileLinkList& links,
                                 FileMappingFlag flags = FileMapping::Selected)
    {
        holder = Add("src/a.tlk", "A/a.tlk", flags, links);
        return holder;
    }
    QStringList Computed()
    {
        EXPECT_TRUE(importer->ComputeTargetFileLinks());
        return PathsOf(holder->GetTargetFileLinks());
    }
    /// A linked file that is in place in the cloud folder.
    FileMappingPointer AddLinked(const QString& source, const QString& target)
    {
        tree.File("cloud/" + target, "");
        return Add(source, target, FileMapping::NoFlag);
    }

    const QDateTime modified = QDateTime::fromSecsSinceEpoch(1'600'000'000);
    FileMappingPointer holder;
};

} // namespace

TEST_F(TargetLinks, NameTheCopyRelativeToTheFolderOfTheFileThatHoldsThem)
{
    struct Row
    {
        const char* name;
        QString link;
        QString source;
        QString target;
        QString written;
    };
    const Row rows[] = {
        {"beside it", "b.tlk", "src/b.tlk", "A/b.tlk", "b.tlk"},
        {"folder below", "b.tlk", "src/b.tlk", "A/lib/b.tlk", "lib/b.tlk"},
        {"sibling folder", "Parts/Bolt.prt", "src/Parts/Bolt.prt", "Parts/Bolt.prt",
         "../Parts/Bolt.prt"},
        {"parent folder", "../b.tlk", "b.tlk", "b.tlk", "../b.tlk"},
        {"sibling with a common prefix", "b.tlk", "src/b.tlk", "AB/b.tlk", "../AB/b.tlk"},
        {"renamed copy", "b.tlk", "src/b.tlk", "A/b (2).tlk", "b (2).tlk"},
        {"written with dots", "./x/../b.tlk", "src/b.tlk", "A/b.tlk", "b.tlk"},
        {"other letter case", "B.TLK", "src/b.tlk", "A/b.tlk", "b.tlk"},
        {"absolute", tree.Path("far/b.tlk"), "far/b.tlk", "A/b.tlk", "b.tlk"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        Restart();
        AddHolder({Link("1", row.link)});
        AddLinked(row.source, row.target);
        EXPECT_EQ(Computed(), QStringList{row.written});
    }
}

TEST_F(TargetLinks, ALinkToAFileOutsideTheImportDisappears)
{
    AddHolder({Link("1", "b.tlk"), Link("2", "c.tlk")});
    AddLinked("src/c.tlk", "A/c.tlk");
    ASSERT_EQ(Computed(), QStringList{"c.tlk"});
    EXPECT_EQ(holder->GetTargetFileLinks()[0].RefId, "2");
}

TEST_F(TargetLinks, ALinkToAFileWithoutATargetDisappears)
{
    AddHolder({Link("1", "b.tlk")});
    Add("src/b.tlk", QString(), FileMapping::NoFlag);
    EXPECT_FALSE(importer->ComputeTargetFileLinks()); // for b.tlk, which has no copy
    EXPECT_EQ(holder->GetTargetFileLinks(), FileLinkList());
    EXPECT_EQ(holder->GetTargetFileLinksExtractedAtFileDate(), modified);
}

TEST_F(TargetLinks, AUrlStaysAsItIs)
{
    AddHolder({Link("1", "vault://x/b.tlk"), Link("2", "http:b")});
    EXPECT_EQ(Computed(), (QStringList{"vault://x/b.tlk", "http:b"}));
}

TEST_F(TargetLinks, KeepOrderRepetitionsAndEverythingButThePath)
{
    SyncServices::FileLink resolved = Link("x", "b.tlk");
    resolved.ItemId = 5;
    resolved.CloudItemId = "cloud";
    AddHolder({Link("3", "c.tlk"), resolved, Link("1", "b.tlk")});
    AddLinked("src/b.tlk", "A/B/b.tlk");
    AddLinked("src/c.tlk", "A/C/c.tlk");
    EXPECT_EQ(Computed(), (QStringList{"C/c.tlk", "B/b.tlk", "B/b.tlk"}));
    const FileLinkList links = holder->GetTargetFileLinks();
    EXPECT_EQ(links[0].RefId, "3");
    EXPECT_EQ(links[1].RefId, "x");
    EXPECT_EQ(links[1].ItemId, 5);
    EXPECT_EQ(links[1].CloudItemId, "cloud");
    EXPECT_EQ(links[2].RefId, "1");
    EXPECT_EQ(PathsOf(holder->GetSourceFileLinks()), (QStringList{"c.tlk", "b.tlk", "b.tlk"}));
}

TEST_F(TargetLinks, TheFirstOfTwoMembersWithOneSourceCounts)
{
    AddHolder({Link("1", "b.tlk")});
    AddLinked("src/b.tlk", "first/b.tlk");
    AddLinked("src/b.tlk", "second/b.tlk");
    EXPECT_EQ(Computed(), QStringList{"../first/b.tlk"});
}

TEST_F(TargetLinks, AFileWithoutLinksGetsAnEmptyListAndTheDateOfTheTarget)
{
    AddHolder({});
    holder->SetTargetFileLinks({Link("1", "earlier")});
    EXPECT_EQ(Computed(), QStringList());
    EXPECT_EQ(holder->GetTargetFileLinksExtractedAtFileDate(), modified);
}

TEST_F(TargetLinks, AFileThatIsNoLocalPathIsLeftAloneAndCountsAsSuccess)
{
    const auto url = AddPaths("vault://x/a.tlk", Cloud("missing.tlk"), FileMapping::NotFilePath,
                              {Link("1", "b.tlk")});
    url->SetTargetFileLinks({Link("1", "earlier")});
    EXPECT_TRUE(importer->ComputeTargetFileLinks());
    EXPECT_EQ(PathsOf(url->GetTargetFileLinks()), QStringList{"earlier"});
    EXPECT_FALSE(url->GetTargetFileLinksExtractedAtFileDate().isValid());
}

TEST_F(TargetLinks, AFileWhoseCopyFailedKeepsItsEarlierLinksAndFailsTheStage)
{
    const auto failed =
        Add("src/b.tlk", "nowhere/b.tlk", FileMapping::Selected, {Link("1", "a.tlk")});
    failed->SetTargetFileLinks({Link("1", "earlier")});
    AddHolder({Link("1", "../b.tlk")});
    holder->SetTargetFileLinks({Link("1", "earlier")});
    EXPECT_FALSE(importer->ComputeTargetFileLinks());
    EXPECT_EQ(PathsOf(failed->GetTargetFileLinks()), QStringList{"earlier"});
    // The others are computed all the same.
    EXPECT_EQ(holder->GetTargetFileLinks(), FileLinkList());
    EXPECT_TRUE(Lines().isEmpty());
}

TEST_F(TargetLinks, AFileWithoutATargetFailsTheStage)
{
    const auto mapping = Add("src/b.tlk", QString(), FileMapping::NoFlag, {Link("1", "x")});
    mapping->SetTargetFileLinks({Link("1", "earlier")});
    EXPECT_FALSE(importer->ComputeTargetFileLinks());
    EXPECT_EQ(PathsOf(mapping->GetTargetFileLinks()), QStringList{"earlier"});
}

TEST_F(TargetLinks, FoldersArePassedOver)
{
    tree.Folder("src/F");
    Add("src/F", "missing", FileMapping::Selected | FileMapping::Folder);
    EXPECT_TRUE(importer->ComputeTargetFileLinks());
}

TEST_F(TargetLinks, WithTheServicesOptionOnlySelectedFilesGetLinks)
{
    Restart(Global::ServicesCopyOption);
    AddHolder({Link("1", "b.tlk")});
    const auto linked = AddLinked("src/b.tlk", "A/b.tlk");
    linked->SetSourceFileLinks({Link("1", "a.tlk")});
    EXPECT_EQ(Computed(), QStringList{"b.tlk"});
    EXPECT_TRUE(linked->GetTargetFileLinks().isEmpty());
    EXPECT_FALSE(linked->GetTargetFileLinksExtractedAtFileDate().isValid());
}

TEST_F(TargetLinks, AnEmptySetOrNoneFails)
{
    EXPECT_FALSE(importer->ComputeTargetFileLinks());
    importer = std::make_unique<FileLinkImporterImp>(controller);
    EXPECT_FALSE(importer->ComputeTargetFileLinks());
}

TEST_F(TargetLinks, AreComputedEvenWhenSomeCopyFailed)
{
    tree.File("src/b.tlk", "").Remove("cloud/A");
    AddHolder({Link("1", "b.tlk"), Link("2", "gone.tlk")});
    Add("src/b.tlk", "A/b.tlk", FileMapping::NoFlag);
    Add("src/gone.tlk", "A/gone.tlk", FileMapping::NoFlag);
    EXPECT_TRUE(importer->CopyFiles());
    // The link names the place where the file belongs.
    EXPECT_EQ(PathsOf(holder->GetTargetFileLinks()), (QStringList{"b.tlk", "gone.tlk"}));
}

} // namespace Halvern::Test
