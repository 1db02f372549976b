// SPDX-License-Identifier: Apache-2.0

#include "ImporterFixture.h"
#include "LogCapture.h"

namespace Halvern::Test {

using namespace Qt::Literals::StringLiterals;

/// The test layout puts every linked file into the folder "layout" beside the selected file's
/// target; names of files tell it what else to do.
class PluginLayout : public ImporterFixture
{
protected:
    PluginLayout() { UseTestLayout(); }

    bool Extract(const QStringList& sources, const QStringList& fileTypes = {})
    {
        QStringList paths;
        for (const QString& source : sources)
            paths.append(Source(source));
        return importer.Initialize(paths, Cloud(u"F"_s), false, {}, fileTypes) &&
               importer.ExtractFileLinks();
    }
    QString TargetOf(const QString& source)
    {
        const FileMappingPointer mapping = Member(importer, source);
        return mapping ? Short(mapping->GetTargetFile()) : u"(no member)"_s;
    }
    FileMapping::FileMappingFlag FlagsOf(const QString& source)
    {
        const FileMappingPointer mapping = Member(importer, source);
        return mapping ? mapping->GetFlag() : FileMapping::NoFlag;
    }
    QStringList LayoutCalls() const { return Short(calls.Calls().filter(u"AssignTargetPaths"_s)); }

    FileLinkImporterImp importer{nullptr};
    PluginCallLog calls;
};

TEST_F(PluginLayout, WhatThePluginPlacedKeepsItsTargetAndIsNotLogged)
{
    Assembly(u"src/a.tasm"_s, {u"1 b.tlk"_s, u"2 leave.tlk"_s});
    tree.File(u"src/b.tlk"_s).File(u"src/leave.tlk"_s);
    ASSERT_TRUE(Extract({u"a.tasm"_s}));
    const LogCapture log;
    ASSERT_TRUE(importer.AssignTargetPaths());
    EXPECT_EQ(TargetOf(u"src/b.tlk"_s), u"cloud/F/layout/b.tlk"_s);
    EXPECT_EQ(TargetOf(u"src/leave.tlk"_s), u"cloud/F/leave.tlk"_s);
    const QStringList defaults = log.Lines().filter(u"Target path not set by plugin"_s);
    ASSERT_EQ(defaults.size(), 1);
    EXPECT_TRUE(defaults[0].contains(u"leave.tlk"_s));
}

TEST_F(PluginLayout, EverySelectedFileThatSupportsLinksIsOffered)
{
    tree.File(u"src/a.tasm"_s).File(u"src/b.tlk"_s).File(u"src/c.txt"_s).Folder(u"src/Proj"_s);
    Assembly(u"src/d.tasm"_s, {u"1 e.tasm"_s});
    tree.File(u"src/e.tasm"_s);
    ASSERT_TRUE(Extract({u"a.tasm"_s, u"b.tlk"_s, u"c.txt"_s, u"Proj"_s, u"d.tasm"_s},
                        {u"tasm"_s, u"txt"_s}));
    ASSERT_TRUE(importer.AssignTargetPaths());
    EXPECT_EQ(LayoutCalls(),
              (QStringList{u"AssignTargetPaths src/a.tasm"_s, u"AssignTargetPaths src/d.tasm"_s}));
}

TEST_F(PluginLayout, AFailureLeavesTheFilesToTheDefaultLayout)
{
    Assembly(u"src/layoutfails.tasm"_s, {u"1 b.tlk"_s});
    Assembly(u"src/layoutthrows.tasm"_s, {u"1 c.tlk"_s});
    Assembly(u"src/good.tasm"_s, {u"1 d.tlk"_s});
    tree.File(u"src/b.tlk"_s).File(u"src/c.tlk"_s).File(u"src/d.tlk"_s);
    ASSERT_TRUE(Extract({u"layoutfails.tasm"_s, u"layoutthrows.tasm"_s, u"good.tasm"_s}));
    const LogCapture log;
    EXPECT_TRUE(importer.AssignTargetPaths());
    EXPECT_EQ(TargetOf(u"src/b.tlk"_s), u"cloud/F/b.tlk"_s);
    EXPECT_EQ(TargetOf(u"src/c.tlk"_s), u"cloud/F/c.tlk"_s);
    EXPECT_EQ(TargetOf(u"src/d.tlk"_s), u"cloud/F/layout/d.tlk"_s);
    EXPECT_EQ(log.Count(u"ERROR Failed to assign target paths for file %1"_s.arg(
                  Source(u"layoutfails.tasm"_s))),
              1);
    EXPECT_EQ(log.Count(u"ERROR Failed to assign target paths for file %1"_s.arg(
                  Source(u"layoutthrows.tasm"_s))),
              1);
}

TEST_F(PluginLayout, WhatOnlyAFileWithSkippedLinksReachesLeavesTheSet)
{
    Assembly(u"src/a.tasm"_s, {u"1 nofollow.tasm"_s, u"2 shared.tlk"_s});
    Assembly(u"src/nofollow.tasm"_s, {u"1 deep.tasm"_s, u"2 shared.tlk"_s});
    Assembly(u"src/deep.tasm"_s, {u"1 deeper.tlk"_s});
    tree.File(u"src/shared.tlk"_s).File(u"src/deeper.tlk"_s);
    ASSERT_TRUE(Extract({u"a.tasm"_s}));
    ASSERT_EQ(importer.GetFileSet()->GetCount(), 5);
    ASSERT_TRUE(importer.AssignTargetPaths());
    EXPECT_EQ(Targets(importer),
              (QStringList{u"src/a.tasm -> cloud/F/a.tasm"_s,
                           u"src/nofollow.tasm -> cloud/F/layout/nofollow.tasm"_s,
                           u"src/shared.tlk -> cloud/F/layout/shared.tlk"_s}));
    EXPECT_EQ(FlagsOf(u"src/nofollow.tasm"_s), FileMapping::SkipFileLinks);
    EXPECT_TRUE(Member(importer, u"src/nofollow.tasm"_s)->GetSourceFileLinks().isEmpty());
    EXPECT_EQ(Member(importer, u"src/a.tasm"_s)->GetSourceFileLinks().size(), 2);
}

TEST_F(PluginLayout, ASelectedFileStaysEvenWhenNothingLinksItAnyMore)
{
    Assembly(u"src/a.tasm"_s, {u"1 nofollow.tasm"_s});
    Assembly(u"src/nofollow.tasm"_s, {u"1 chosen.tlk"_s, u"2 other.tlk"_s});
    tree.File(u"src/chosen.tlk"_s).File(u"src/other.tlk"_s);
    ASSERT_TRUE(Extract({u"a.tasm"_s, u"chosen.tlk"_s}));
    ASSERT_TRUE(importer.AssignTargetPaths());
    EXPECT_EQ(Members(importer),
              (QStringList{u"src/a.tasm"_s, u"src/chosen.tlk"_s, u"src/nofollow.tasm"_s}));
}

TEST_F(PluginLayout, FilesWhoseLinksWereSkippedBeforeTheStageKeepTheirLinkedFiles)
{
    Assembly(u"src/a.tasm"_s, {u"1 b.tlk"_s});
    tree.File(u"src/b.tlk"_s);
    ASSERT_TRUE(Extract({u"a.tasm"_s}));
    Member(importer, u"src/a.tasm"_s)->SetFlag(FileMapping::SkipFileLinks, true);
    ASSERT_TRUE(importer.AssignTargetPaths());
    EXPECT_EQ(Members(importer), (QStringList{u"src/a.tasm"_s, u"src/b.tlk"_s}));
    EXPECT_EQ(Member(importer, u"src/a.tasm"_s)->GetSourceFileLinks().size(), 1);
}

TEST_F(PluginLayout, APluginCanImportAnotherFileInPlaceOfALinkedOne)
{
    Assembly(u"src/a.tasm"_s, {u"1 replaced.tlk"_s, u"2 b.tasm"_s});
    Assembly(u"src/b.tasm"_s, {u"1 ./replaced.tlk"_s});
    tree.File(u"src/replaced.tlk"_s, "old").File(u"src/replacement/replaced.tlk"_s, "new");
    ASSERT_TRUE(Extract({u"a.tasm"_s}));
    const LogCapture log;
    ASSERT_TRUE(importer.AssignTargetPaths());
    EXPECT_EQ(Member(importer, u"src/replaced.tlk"_s), nullptr);
    EXPECT_EQ(TargetOf(u"src/replacement/replaced.tlk"_s), u"cloud/F/layout/replaced.tlk"_s);
    EXPECT_EQ(Member(importer, u"src/a.tasm"_s)->GetSourceFileLinks().at(0).Path,
              Source(u"replacement/replaced.tlk"_s));
    EXPECT_EQ(Member(importer, u"src/b.tasm"_s)->GetSourceFileLinks().at(0).Path,
              Source(u"replacement/replaced.tlk"_s));
    EXPECT_TRUE(log.Has(u"INFO Changing source file from %1 to %2 and updating all links which "
                        "reference this source file"_s.arg(Source(u"replaced.tlk"_s))
                            .arg(Source(u"replacement/replaced.tlk"_s))));
}

TEST_F(PluginLayout, TheReplacementIsWhatIsCopiedAndLinked)
{
    Assembly(u"src/a.tasm"_s, {u"1 replaced.tlk"_s});
    tree.File(u"src/replaced.tlk"_s, "old").File(u"src/replacement/replaced.tlk"_s, "new");
    ASSERT_TRUE(Import({Source(u"a.tasm"_s)}, Cloud(u"F/a.tasm"_s)));
    EXPECT_EQ(tree.Read(u"cloud/F/layout/replaced.tlk"_s), "new");
    EXPECT_EQ(tree.Read(u"cloud/F/a.tasm"_s), "src/a.tasm\nlink 1 layout/replaced.tlk\n");
}

TEST_F(PluginLayout, FlagsThatBelongToTheHostCannotBeSetByAPlugin)
{
    Assembly(u"src/a.tasm"_s, {u"1 forbidden.tlk"_s});
    tree.File(u"src/forbidden.tlk"_s);
    ASSERT_TRUE(Extract({u"a.tasm"_s}));
    ASSERT_TRUE(importer.AssignTargetPaths());
    EXPECT_EQ(TargetOf(u"src/forbidden.tlk"_s), u"cloud/F/layout/forbidden.tlk"_s);
    EXPECT_EQ(FlagsOf(u"src/forbidden.tlk"_s), FileMapping::NoFlag);
}

TEST_F(PluginLayout, ATargetWhoseNameThePluginKeepsIsReplacedEvenWhereOthersAreRenamed)
{
    Assembly(u"src/a.tasm"_s, {u"1 keepname.tlk"_s, u"2 other.tlk"_s});
    tree.File(u"src/keepname.tlk"_s, "new").File(u"src/other.tlk"_s, "new");
    tree.File(u"cloud/F/layout/keepname.tlk"_s, "old").File(u"cloud/F/layout/other.tlk"_s, "old");
    ASSERT_TRUE(Import({Source(u"a.tasm"_s)}, Cloud(u"F/a.tasm"_s)));
    EXPECT_EQ(tree.Contents(u"cloud/F/layout"_s),
              (FileTree::Snapshot{{u"keepname.tlk"_s, "new"},
                                  {u"other.tlk"_s, "old"},
                                  {u"other (2).tlk"_s, "new"}}));
}

TEST_F(PluginLayout, AnEarlierPlaceFromTheHistoryIsNotChangedByTheLayout)
{
    Assembly(u"src/a.tasm"_s, {u"1 b.tlk"_s});
    tree.File(u"src/b.tlk"_s).File(u"cloud/old/b.tlk"_s);
    const auto earlier =
        std::make_shared<FileMapping>(Source(u"b.tlk"_s), Cloud(u"old/b.tlk"_s), 7);
    ASSERT_TRUE(Database().AddAndUpdateFileCopyHistory({earlier}, {}));
    ASSERT_TRUE(Extract({u"a.tasm"_s}));
    ASSERT_TRUE(importer.AssignTargetPaths());
    EXPECT_EQ(TargetOf(u"src/b.tlk"_s), u"cloud/old/b.tlk"_s);
}

} // namespace Halvern::Test
