// SPDX-License-Identifier: Apache-2.0

#include "SelectionFixture.h"

#include <QtCore/QDir>

#include <random>

namespace Halvern::Test {

using namespace Jobs;
using namespace Qt::StringLiterals;

namespace {

class SelectionWalk : public SelectionOnDisk
{};

} // namespace

TEST_F(SelectionWalk, GivesTheFilesOfAFolderBeforeItsFoldersAndEachFolderBeforeItsContent)
{
    tree.File(u"w/p/z.prt"_s).File(u"w/p/a/c.prt"_s).File(u"w/p/a/b/d.prt"_s);
    tree.File(u"w/p/e/f.prt"_s).Folder(u"w/p/a/empty"_s).File(u"w/q.prt"_s);
    EXPECT_EQ(
        Names({u"q.prt"_s, u"p"_s}),
        (QStringList{u"q.prt"_s, u"p/"_s, u"p/z.prt"_s, u"p/a/"_s, u"p/a/c.prt"_s, u"p/a/b/"_s,
                     u"p/a/b/d.prt"_s, u"p/a/empty/"_s, u"p/e/"_s, u"p/e/f.prt"_s}));
}

TEST_F(SelectionWalk, SortsNamesWithoutRegardToLetterCase)
{
    for (const QString& name :
         {u"b"_s, u"A"_s, u"\u00c4"_s, u"c"_s, u"a.x"_s, u"_"_s, u"10"_s, u"9"_s})
        tree.File(u"w/p/"_s + name);
    EXPECT_EQ(Names({u"p"_s}), (QStringList{u"p/"_s, u"p/10"_s, u"p/9"_s, u"p/_"_s, u"p/A"_s,
                                            u"p/a.x"_s, u"p/b"_s, u"p/c"_s, u"p/\u00c4"_s}));
}

TEST_F(SelectionWalk, ListsInTheOrderOfQt)
{
    std::mt19937 random(11);
    for (int i = 0; i < 200; ++i) {
        QString name;
        for (auto length = 1 + random() % 4; length > 0; --length)
            name += u"aAbB_-.1 \u00e4\u00df\u0130\u6728"_s.at(random() % 13);
        if (name.trimmed() == name && !name.endsWith(u'.') &&
            QDir(tree.Path(u"w/p"_s)).entryList({name}, QDir::AllEntries | QDir::Hidden).isEmpty())
            tree.File(u"w/p/"_s + name);
    }
    QStringList expected{u"p/"_s};
    for (const QString& name : QDir(tree.Path(u"w/p"_s)).entryList(QDir::Files | QDir::Hidden))
        expected.append(u"p/"_s + name);
    ASSERT_GT(expected.size(), 100);
    EXPECT_EQ(Names({u"p"_s}), expected);
}

TEST_F(SelectionWalk, SaysWhatAnEntryIs)
{
    tree.File(u"w/p/a.prt"_s).Folder(u"w/p/sub"_s);
    const QList<SelectedEntry> entries = List({u"p"_s}).entries;
    ASSERT_EQ(entries.size(), 3);
    EXPECT_EQ(entries[0].source, tree.Path(u"w/p"_s));
    EXPECT_TRUE(entries[0].isFolder);
    EXPECT_FALSE(entries[0].isNested);
    EXPECT_FALSE(entries[0].isHidden);
    EXPECT_EQ(entries[1].source, tree.Path(u"w/p/a.prt"_s));
    EXPECT_FALSE(entries[1].isFolder);
    EXPECT_TRUE(entries[1].isNested);
    EXPECT_TRUE(entries[2].isFolder);
    EXPECT_TRUE(entries[2].isNested);
}

TEST_F(SelectionWalk, NamesWhatVanishedMeanwhile)
{
    tree.File(u"w/a.prt"_s);
    const SelectionListing listing = List({u"gone.prt"_s, u"a.prt"_s, u"a.prt/gone"_s});
    EXPECT_EQ(Lines(listing.leftOut),
              (QStringList{u"Vanished gone.prt"_s, u"Vanished a.prt/gone"_s}));
    EXPECT_EQ(listing.entries.size(), 1);
}

TEST_F(SelectionWalk, LeavesOutWhatPatternsExcludeWithOneLineForAFolder)
{
    tree.File(u"w/p/a.prt"_s).File(u"w/p/a.bak"_s).File(u"w/p/old/b.prt"_s).File(u"w/p/old/c"_s);
    tree.File(u"w/p/sub/old"_s).File(u"w/p/.git/config"_s);
    EXPECT_EQ(Names({u"p"_s}, {u"*.bak"_s, u"old/"_s}),
              (QStringList{u"p/"_s, u"p/a.prt"_s, u"p/sub/"_s, u"p/sub/old"_s}));
    EXPECT_EQ(LeftOut({u"p"_s}, {u"*.bak"_s, u"old/"_s}),
              (QStringList{u"Excluded p/a.bak: *.bak"_s, u"Excluded p/.git: .git (built in)"_s,
                           u"Excluded p/old: old/"_s}));
}

TEST_F(SelectionWalk, TakesWhatIsGivenWhateverThePatternsSay)
{
    tree.File(u"w/a.FCStd1"_s).File(u"w/b.bak"_s).File(u"w/.git/config"_s).File(u"w/.git/x.bak"_s);
    EXPECT_EQ(Names({u"a.FCStd1"_s, u"b.bak"_s, u".git"_s}, {u"*.bak"_s}),
              (QStringList{u"a.FCStd1"_s, u"b.bak"_s, u".git/"_s, u".git/config"_s}));
}

TEST_F(SelectionWalk, TakesPatternsOfTheImportRelativeToEachSourceFolder)
{
    tree.File(u"w/p/a"_s).File(u"w/p/sub/a"_s).File(u"w/q/a"_s).File(u"w/q/p/a"_s);
    EXPECT_EQ(Names({u"p"_s, u"q"_s}, {u"/a"_s, u"p/a"_s}),
              (QStringList{u"p/"_s, u"p/sub/"_s, u"p/sub/a"_s, u"q/"_s, u"q/p/"_s}));
}

TEST_F(SelectionWalk, ReadsPatternsInTheFoldersOfASource)
{
    tree.File(u"w/p/.corsyncignore"_s, "*.bak\n/top\n").File(u"w/p/top"_s).File(u"w/p/a.bak"_s);
    tree.File(u"w/p/sub/.corsyncignore"_s, "!a.bak\nx\n").File(u"w/p/sub/a.bak"_s);
    tree.File(u"w/p/sub/b.bak"_s).File(u"w/p/sub/top"_s).File(u"w/p/sub/deep/x"_s);
    tree.File(u"w/p/z/x"_s).File(u"w/p/z/a.bak"_s).File(u"w/q/top"_s).File(u"w/q/x"_s);
    EXPECT_EQ(Names({u"p"_s, u"q"_s}),
              (QStringList{u"p/"_s, u"p/sub/"_s, u"p/sub/a.bak"_s, u"p/sub/top"_s, u"p/sub/deep/"_s,
                           u"p/z/"_s, u"p/z/x"_s, u"q/"_s, u"q/top"_s, u"q/x"_s}));
    EXPECT_EQ(LeftOut({u"p"_s}),
              (QStringList{u"Excluded p/.corsyncignore: .corsyncignore (built in)"_s,
                           u"Excluded p/a.bak: *.bak (p/.corsyncignore:1)"_s,
                           u"Excluded p/top: /top (p/.corsyncignore:2)"_s,
                           u"Excluded p/sub/.corsyncignore: .corsyncignore (built in)"_s,
                           u"Excluded p/sub/b.bak: *.bak (p/.corsyncignore:1)"_s,
                           u"Excluded p/sub/deep/x: x (p/sub/.corsyncignore:2)"_s,
                           u"Excluded p/z/a.bak: *.bak (p/.corsyncignore:1)"_s}));
}

TEST_F(SelectionWalk, DoesNotReadPatternsAboveASource)
{
    tree.File(u"w/.corsyncignore"_s, "*.bak\n").File(u"w/p/a.bak"_s).File(u"w/b.bak"_s);
    EXPECT_EQ(Names({u"p"_s, u"b.bak"_s}), (QStringList{u"p/"_s, u"p/a.bak"_s, u"b.bak"_s}));
}

TEST_F(SelectionWalk, TakesNothingOfAFolderWhosePatternsCannotBeRead)
{
    tree.File(u"w/p/a"_s).File(u"w/p/sub/secret"_s).File(u"w/p/sub/deep/b"_s);
    tree.File(u"w/p/sub/.corsyncignore"_s, "secret\nH\xF6he\n").File(u"w/p/z"_s);
    tree.File(u"w/large/.corsyncignore"_s, QByteArray(1024 * 1024 + 1, '\n')).File(u"w/large/a"_s);
    tree.Folder(u"w/folder/.corsyncignore"_s).File(u"w/folder/a"_s);
    const SelectionListing listing = List({u"p"_s, u"large"_s, u"folder"_s});
    const QStringList lines = Lines(listing.leftOut);
    ASSERT_EQ(lines.size(), 3);
    EXPECT_EQ(lines[0], u"NotReadable p/sub/.corsyncignore: no UTF-8; nothing of its folder is "
                        u"imported"_s);
    EXPECT_EQ(lines[1], u"NotReadable large/.corsyncignore: larger than 1 MiB; nothing of its "
                        u"folder is imported"_s);
    EXPECT_TRUE(lines[2].startsWith(u"NotReadable folder/.corsyncignore: "_s));
    EXPECT_TRUE(listing.leftOut[0].IsFailure());
    EXPECT_EQ(Names({u"p"_s, u"large"_s, u"folder"_s}),
              (QStringList{u"p/"_s, u"p/a"_s, u"p/z"_s, u"p/sub/"_s, u"large/"_s, u"folder/"_s}));
}

TEST_F(SelectionWalk, TakesAFileOfPatternsAsLargeAsMayBe)
{
    tree.File(u"w/p/.corsyncignore"_s, QByteArray(1024 * 1024 - 2, '\n') + "a\n");
    tree.File(u"w/p/a"_s).File(u"w/p/b"_s);
    EXPECT_EQ(Names({u"p"_s}), (QStringList{u"p/"_s, u"p/b"_s}));
}

TEST_F(SelectionWalk, StopsWhereverItIsCancelled)
{
    tree.File(u"w/a.prt"_s).File(u"w/p/a.prt"_s).File(u"w/p/b/c.prt"_s).File(u"w/p/b/d.prt"_s);
    const QStringList sources{tree.Path(u"w/a.prt"_s), tree.Path(u"w/p"_s)};
    const QList<SelectedEntry> all = List({u"a.prt"_s, u"p"_s}).entries;
    int last = 0;
    for (int limit = 0;; ++limit) {
        int polls = 0;
        const SelectionListing listing =
            WalkSelection(sources, ExcludeRules(), [&] { return polls++ >= limit; });
        if (listing.isComplete)
            break;
        EXPECT_EQ(polls, limit + 1) << "asked again after the cancel";
        ASSERT_LE(listing.entries.size(), all.size());
        for (qsizetype i = 0; i < listing.entries.size(); ++i)
            EXPECT_EQ(listing.entries[i].source, all[i].source);
        last = limit;
    }
    EXPECT_GE(last, all.size() - 1) << "asked at least once for each entry";
}

} // namespace Halvern::Test
