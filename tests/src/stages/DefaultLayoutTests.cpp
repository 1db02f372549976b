// SPDX-License-Identifier: Apache-2.0

#include "ImporterFixture.h"
#include "LogCapture.h"

namespace Halvern::Test {

using namespace Qt::Literals::StringLiterals;

class DefaultLayout : public ImporterFixture
{
protected:
    bool Extract(const QStringList& sources, const QStringList& fileTypes = {})
    {
        QStringList paths;
        for (const QString& source : sources)
            paths.append(Source(source));
        return importer.Initialize(paths, Cloud(u"F"_s), false, {}, fileTypes) &&
               importer.ExtractFileLinks();
    }
    bool Assign(const QStringList& sources)
    {
        return Extract(sources) && importer.AssignTargetPaths();
    }
    QString TargetOf(const QString& source)
    {
        const FileMappingPointer mapping = Member(importer, source);
        return mapping ? Short(mapping->GetTargetFile()) : u"(no member)"_s;
    }
    QString DefaultLine(const QString& source, const QString& target) const
    {
        return u"INFO Target path not set by plugin for file %1. Setting default target path %2."_s
            .arg(tree.Path(source))
            .arg(tree.Path(target));
    }

    FileLinkImporterImp importer{nullptr};
};

TEST_F(DefaultLayout, ANeighbourStaysANeighbourAndOthersKeepTheNameOfTheirFolder)
{
    Assembly(u"src/p/a.tasm"_s, {u"1 b.tlk"_s, u"2 ../lib/c.tlk"_s});
    tree.File(u"src/p/b.tlk"_s).File(u"src/lib/c.tlk"_s);
    ASSERT_TRUE(Extract({u"p/a.tasm"_s}));
    const LogCapture log;
    ASSERT_TRUE(importer.AssignTargetPaths());
    EXPECT_EQ(Targets(importer),
              (QStringList{u"src/p/a.tasm -> cloud/F/a.tasm"_s, u"src/p/b.tlk -> cloud/F/b.tlk"_s,
                           u"src/lib/c.tlk -> cloud/F/lib/c.tlk"_s}));
    EXPECT_EQ(log.Count(DefaultLine(u"src/p/b.tlk"_s, u"cloud/F/b.tlk"_s)), 1);
    EXPECT_EQ(log.Count(DefaultLine(u"src/lib/c.tlk"_s, u"cloud/F/lib/c.tlk"_s)), 1);
    EXPECT_EQ(log.Lines().first(), u"INFO Begin assigning target paths for file links"_s);
    EXPECT_EQ(log.Lines().last(), u"INFO Finished assigning target paths"_s);
}

TEST_F(DefaultLayout, FoldersThatDifferInCaseOnlyAreOneFolder)
{
    Assembly(u"src/p/a.tasm"_s, {u"1 ../P/b.tlk"_s});
    tree.File(u"src/P/b.tlk"_s);
    ASSERT_TRUE(Assign({u"p/a.tasm"_s}));
    EXPECT_EQ(TargetOf(u"src/P/b.tlk"_s), u"cloud/F/b.tlk"_s);
}

TEST_F(DefaultLayout, LinksOfLinkedFilesAreLaidOutNextToTheirHoldersTarget)
{
    Assembly(u"src/p/a.tasm"_s, {u"1 sub/b.tasm"_s});
    Assembly(u"src/p/sub/b.tasm"_s, {u"1 c.tlk"_s, u"2 ../d.tlk"_s, u"3 ../../q/e.tlk"_s});
    tree.File(u"src/p/sub/c.tlk"_s).File(u"src/p/d.tlk"_s).File(u"src/q/e.tlk"_s);
    ASSERT_TRUE(Assign({u"p/a.tasm"_s}));
    EXPECT_EQ(TargetOf(u"src/p/sub/b.tasm"_s), u"cloud/F/sub/b.tasm"_s);
    EXPECT_EQ(TargetOf(u"src/p/sub/c.tlk"_s), u"cloud/F/sub/c.tlk"_s);
    EXPECT_EQ(TargetOf(u"src/p/d.tlk"_s), u"cloud/F/sub/p/d.tlk"_s);
    EXPECT_EQ(TargetOf(u"src/q/e.tlk"_s), u"cloud/F/sub/q/e.tlk"_s);
}

TEST_F(DefaultLayout, ASharedFileIsPlacedByTheFirstHolderInTheTree)
{
    Assembly(u"src/p/a.tasm"_s, {u"1 sub/b.tasm"_s, u"2 c.tlk"_s});
    Assembly(u"src/p/sub/b.tasm"_s, {u"1 ../c.tlk"_s});
    tree.File(u"src/p/c.tlk"_s);
    ASSERT_TRUE(Extract({u"p/a.tasm"_s}));
    const LogCapture log;
    ASSERT_TRUE(importer.AssignTargetPaths());
    EXPECT_EQ(TargetOf(u"src/p/c.tlk"_s), u"cloud/F/sub/p/c.tlk"_s);
    EXPECT_EQ(log.Lines().filter(u"Target path not set"_s).size(), 2);
}

TEST_F(DefaultLayout, ASelectedFileThatAnotherLinksKeepsItsOwnTarget)
{
    Assembly(u"src/p/a.tasm"_s, {u"1 ../lib/c.tlk"_s});
    tree.File(u"src/lib/c.tlk"_s);
    ASSERT_TRUE(Assign({u"p/a.tasm"_s, u"lib/c.tlk"_s}));
    EXPECT_EQ(TargetOf(u"src/lib/c.tlk"_s), u"cloud/F/c.tlk"_s);
}

TEST_F(DefaultLayout, AFileInTheCloudCacheFolderStaysWhereItIsAndPlacesItsLinksThere)
{
    Assembly(u"src/a.tasm"_s, {u"1 ../cloud/lib/b.tasm"_s});
    Assembly(u"cloud/lib/b.tasm"_s, {u"1 ../../src/c.tlk"_s});
    tree.File(u"src/c.tlk"_s);
    ASSERT_TRUE(Assign({u"a.tasm"_s}));
    EXPECT_EQ(TargetOf(u"cloud/lib/b.tasm"_s), u"cloud/lib/b.tasm"_s);
    EXPECT_EQ(TargetOf(u"src/c.tlk"_s), u"cloud/lib/src/c.tlk"_s);
}

TEST_F(DefaultLayout, AWebAddressGetsNoTarget)
{
    Assembly(u"src/a.tasm"_s, {u"1 http://host/x.tlk"_s, u"2 b.tlk"_s});
    tree.File(u"src/b.tlk"_s);
    ASSERT_TRUE(Assign({u"a.tasm"_s}));
    EXPECT_EQ(TargetOf(QDir::cleanPath(u"http://host/x.tlk"_s)), QString());
    EXPECT_EQ(TargetOf(u"src/b.tlk"_s), u"cloud/F/b.tlk"_s);
}

TEST_F(DefaultLayout, WhatAFileWithoutATargetLinksGoesToTheCloudCacheFolderItself)
{
    Assembly(u"src/a.tasm"_s, {u"1 b.tasm"_s});
    Assembly(u"src/b.tasm"_s, {u"1 c.tlk"_s, u"2 lib/d.tlk"_s});
    tree.File(u"src/c.tlk"_s).File(u"src/lib/d.tlk"_s);
    ASSERT_TRUE(Extract({u"a.tasm"_s}));
    Member(importer, u"src/b.tasm"_s)->SetFlag(FileMapping::NotFilePath, true);
    ASSERT_TRUE(importer.AssignTargetPaths());
    EXPECT_EQ(TargetOf(u"src/b.tasm"_s), QString());
    EXPECT_EQ(TargetOf(u"src/c.tlk"_s), u"cloud/c.tlk"_s);
    EXPECT_EQ(TargetOf(u"src/lib/d.tlk"_s), u"cloud/lib/d.tlk"_s);
}

TEST_F(DefaultLayout, ASetWithoutSupportedFilesIsLeftAloneSilently)
{
    Assembly(u"src/a.tasm"_s, {u"1 b.tlk"_s});
    ASSERT_TRUE(Extract({u"a.tasm"_s}, {u"prt"_s}));
    const LogCapture log;
    EXPECT_TRUE(importer.AssignTargetPaths());
    EXPECT_EQ(log.Lines(), QStringList());
}

TEST_F(DefaultLayout, FilesThatLinkEachOtherAreAllPlaced)
{
    Assembly(u"src/a.tasm"_s, {u"1 b.tasm"_s});
    Assembly(u"src/b.tasm"_s, {u"1 lib/c.tasm"_s, u"2 a.tasm"_s});
    Assembly(u"src/lib/c.tasm"_s, {u"1 ../b.tasm"_s, u"2 d.tlk"_s});
    tree.File(u"src/lib/d.tlk"_s);
    ASSERT_TRUE(Assign({u"a.tasm"_s}));
    EXPECT_EQ(TargetOf(u"src/b.tasm"_s), u"cloud/F/b.tasm"_s);
    EXPECT_EQ(TargetOf(u"src/lib/c.tasm"_s), u"cloud/F/lib/c.tasm"_s);
    EXPECT_EQ(TargetOf(u"src/lib/d.tlk"_s), u"cloud/F/lib/d.tlk"_s);
}

TEST_F(DefaultLayout, ALinkedFileDirectlyBelowTheRootKeepsACleanTarget)
{
    const QString root = QDir::rootPath();
    Assembly(u"src/a.tasm"_s, {u"1 "_s + root + u"c.tlk"_s});
    ASSERT_TRUE(Assign({u"a.tasm"_s}));
    const FileMappingPointer mapping = Member(importer, root + u"c.tlk"_s);
    ASSERT_NE(mapping, nullptr);
    EXPECT_EQ(mapping->GetTargetFile(), QDir::cleanPath(mapping->GetTargetFile()));
    EXPECT_TRUE(mapping->GetTargetFile().startsWith(Cloud(u"F"_s) + u'/'));
    EXPECT_TRUE(mapping->GetTargetFile().endsWith(u"/c.tlk"_s));
}

TEST_F(DefaultLayout, SubAssembliesThatAllShareTheirPartsDoNotMultiplyTheWork)
{
    // 2^24 paths lead to the last level.
    constexpr int levels = 24;
    for (int i = 0; i < levels; ++i)
        for (const QChar side : {u'x', u'y'})
            Assembly(u"src/%1%2.tasm"_s.arg(side).arg(i),
                     {u"1 x%1.tasm"_s.arg(i + 1), u"2 y%1.tasm"_s.arg(i + 1)});
    ASSERT_TRUE(Assign({u"x0.tasm"_s}));
    EXPECT_EQ(importer.GetFileSet()->GetCount(), 2 * levels + 1);
    EXPECT_EQ(TargetOf(u"src/y%1.tasm"_s.arg(levels)), u"cloud/F/y%1.tasm"_s.arg(levels));
}

TEST_F(DefaultLayout, ALongChainOfLinksIsPlacedToItsEnd)
{
    constexpr int length = 3000;
    for (int i = 0; i < length; ++i)
        Assembly(u"src/%1.tasm"_s.arg(i), {u"1 %1.tasm"_s.arg(i + 1)});
    ASSERT_TRUE(Assign({u"0.tasm"_s}));
    EXPECT_EQ(TargetOf(u"src/%1.tasm"_s.arg(length)), u"cloud/F/%1.tasm"_s.arg(length));
}

} // namespace Halvern::Test
