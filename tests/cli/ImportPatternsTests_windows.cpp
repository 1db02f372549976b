// SPDX-License-Identifier: Apache-2.0

// Shells of Windows hand patterns to the program as they are typed.

#include "CommandFixture.h"

#include <windows.h>

namespace Halvern::Test {

namespace {

class ImportOfPatterns : public CommandFixture
{
protected:
    ImportOfPatterns()
    {
        tree.File(u"work/proj/b1.tlk"_qs, "b1")
            .File(u"work/proj/A.TLK"_qs, "A")
            .File(u"work/proj/b22.tlk"_qs, "b22")
            .File(u"work/proj/b1.tlkx"_qs, "b1x")
            .File(u"work/proj/plain"_qs, "plain")
            .File(u"work/proj/sub/deep.tlk"_qs, "deep");
    }
};

const QString NothingCopied = QStringLiteral("corsync: no such file or folder: ");

} // namespace

TEST_F(ImportOfPatterns, TakesTheNamesThatAStarMatchesWhateverTheirCase)
{
    for (const QString& pattern : {u"proj/*.tlk"_qs, u"proj\\*.Tlk"_qs}) {
        const CommandResult result = Import({pattern});
        EXPECT_EQ(result.exitCode, 0) << ::testing::PrintToString(result);
        EXPECT_EQ(Cloud(), (FileTree::Snapshot{
                               {u"A.TLK"_qs, "A"}, {u"b1.tlk"_qs, "b1"}, {u"b22.tlk"_qs, "b22"}}));
        EXPECT_EQ(result.Lines().size(), 4) << ::testing::PrintToString(result);
    }
}

TEST_F(ImportOfPatterns, TakesOneCharacterForAQuestionMarkInTheCurrentFolder)
{
    tree.File(u"work/c1.tlk"_qs, "c1")
        .File(u"work/c22.tlk"_qs, "c22")
        .File(u"work/cä.tlk"_qs, "cä");
    EXPECT_EQ(Import({u"c?.tlk"_qs}).exitCode, 0);
    EXPECT_EQ(Cloud(), (FileTree::Snapshot{{u"c1.tlk"_qs, "c1"}, {u"cä.tlk"_qs, "cä"}}));
}

TEST_F(ImportOfPatterns, TakesFoldersAndNamesWithoutADotForStarDotStarButNothingHidden)
{
    const QString hidden = tree.Path(u"work/proj/b22.tlk"_qs);
    ASSERT_TRUE(SetFileAttributesW(reinterpret_cast<const wchar_t*>(hidden.utf16()),
                                   FILE_ATTRIBUTE_HIDDEN));
    EXPECT_EQ(Import({u"proj/*.*"_qs}).exitCode, 0);
    EXPECT_EQ(Cloud(), (FileTree::Snapshot{{u"A.TLK"_qs, "A"},
                                           {u"b1.tlk"_qs, "b1"},
                                           {u"b1.tlkx"_qs, "b1x"},
                                           {u"plain"_qs, "plain"},
                                           {u"sub/deep.tlk"_qs, "deep"}}));
}

TEST_F(ImportOfPatterns, TakesEveryOtherCharacterAsItIs)
{
    tree.File(u"work/x[1]+ (a).tlk"_qs, "x1").File(u"work/x1 a.tlk"_qs, "other");
    EXPECT_EQ(Import({u"x[1]+ (a)*"_qs}).exitCode, 0);
    EXPECT_EQ(Cloud(), (FileTree::Snapshot{{u"x[1]+ (a).tlk"_qs, "x1"}}));
}

TEST_F(ImportOfPatterns, SaysNoSuchFileForOneThatMatchesNothing)
{
    for (const QString& pattern : {u"proj/*.gone"_qs, u"pro?/b1.tlk"_qs, u"gone/*"_qs}) {
        const CommandResult result = Import({u"proj/b1.tlk"_qs, pattern});
        EXPECT_EQ(result.exitCode, 3);
        EXPECT_EQ(result.err, NothingCopied + pattern + u'\n');
    }
    EXPECT_TRUE(Cloud().isEmpty());
}

TEST_F(ImportOfPatterns, AreReadByLinksAsWell)
{
    const CommandResult result = Run({u"links"_qs, u"--plugin-path"_qs, tree.Path(u"plugins"_qs),
                                      u"--plugin-path"_qs, TestPluginFolder(), u"proj/b*.tlk"_qs});
    EXPECT_EQ(result.exitCode, 0) << ::testing::PrintToString(result);
    EXPECT_EQ(result.Lines(), (QStringList{tree.Path(u"work/proj/b1.tlk"_qs) + u": no links"_qs,
                                           tree.Path(u"work/proj/b22.tlk"_qs) + u": no links"_qs}));
}

} // namespace Halvern::Test
