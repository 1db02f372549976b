// SPDX-License-Identifier: Apache-2.0

// Shells of Windows hand patterns to the program as they are typed.

#include "CommandFixture.h"

#include <windows.h>

namespace Halvern::Test {

using namespace Qt::StringLiterals;

namespace {

class ImportOfPatterns : public CommandFixture
{
protected:
    ImportOfPatterns()
    {
        tree.File(u"work/proj/b1.tlk"_s, "b1")
            .File(u"work/proj/A.TLK"_s, "A")
            .File(u"work/proj/b22.tlk"_s, "b22")
            .File(u"work/proj/b1.tlkx"_s, "b1x")
            .File(u"work/proj/plain"_s, "plain")
            .File(u"work/proj/sub/deep.tlk"_s, "deep");
    }
};

const QString NothingCopied = u"corsync: no such file or folder: "_s;

} // namespace

TEST_F(ImportOfPatterns, TakesTheNamesThatAStarMatchesWhateverTheirCase)
{
    for (const QString& pattern : {u"proj/*.tlk"_s, u"proj\\*.Tlk"_s}) {
        const CommandResult result = Import({pattern});
        EXPECT_EQ(result.exitCode, 0) << ::testing::PrintToString(result);
        EXPECT_EQ(Cloud(), (FileTree::Snapshot{
                               {u"A.TLK"_s, "A"}, {u"b1.tlk"_s, "b1"}, {u"b22.tlk"_s, "b22"}}));
        EXPECT_EQ(result.Lines().size(), 4) << ::testing::PrintToString(result);
    }
}

TEST_F(ImportOfPatterns, TakesOneCharacterForAQuestionMarkInTheCurrentFolder)
{
    tree.File(u"work/c1.tlk"_s, "c1").File(u"work/c22.tlk"_s, "c22").File(u"work/cä.tlk"_s, "cä");
    EXPECT_EQ(Import({u"c?.tlk"_s}).exitCode, 0);
    EXPECT_EQ(Cloud(), (FileTree::Snapshot{{u"c1.tlk"_s, "c1"}, {u"cä.tlk"_s, "cä"}}));
}

TEST_F(ImportOfPatterns, TakesFoldersAndNamesWithoutADotForStarDotStarButNothingHidden)
{
    const QString hidden = tree.Path(u"work/proj/b22.tlk"_s);
    ASSERT_TRUE(SetFileAttributesW(reinterpret_cast<const wchar_t*>(hidden.utf16()),
                                   FILE_ATTRIBUTE_HIDDEN));
    EXPECT_EQ(Import({u"proj/*.*"_s}).exitCode, 0);
    EXPECT_EQ(Cloud(), (FileTree::Snapshot{{u"A.TLK"_s, "A"},
                                           {u"b1.tlk"_s, "b1"},
                                           {u"b1.tlkx"_s, "b1x"},
                                           {u"plain"_s, "plain"},
                                           {u"sub/deep.tlk"_s, "deep"}}));
}

TEST_F(ImportOfPatterns, TakesEveryOtherCharacterAsItIs)
{
    tree.File(u"work/x[1]+ (a).tlk"_s, "x1").File(u"work/x1 a.tlk"_s, "other");
    EXPECT_EQ(Import({u"x[1]+ (a)*"_s}).exitCode, 0);
    EXPECT_EQ(Cloud(), (FileTree::Snapshot{{u"x[1]+ (a).tlk"_s, "x1"}}));
}

TEST_F(ImportOfPatterns, SaysNoSuchFileForOneThatMatchesNothing)
{
    for (const QString& pattern : {u"proj/*.gone"_s, u"pro?/b1.tlk"_s, u"gone/*"_s}) {
        const CommandResult result = Import({u"proj/b1.tlk"_s, pattern});
        EXPECT_EQ(result.exitCode, 3);
        EXPECT_EQ(result.err, NothingCopied + pattern + u'\n');
    }
    EXPECT_TRUE(Cloud().isEmpty());
}

TEST_F(ImportOfPatterns, AreReadByLinksAsWell)
{
    const CommandResult result = Run({u"links"_s, u"--plugin-path"_s, tree.Path(u"plugins"_s),
                                      u"--plugin-path"_s, TestPluginFolder(), u"proj/b*.tlk"_s});
    EXPECT_EQ(result.exitCode, 0) << ::testing::PrintToString(result);
    EXPECT_EQ(result.Lines(), (QStringList{tree.Path(u"work/proj/b1.tlk"_s) + u": no links"_s,
                                           tree.Path(u"work/proj/b22.tlk"_s) + u": no links"_s}));
}

} // namespace Halvern::Test
