// SPDX-License-Identifier: Apache-2.0

// Whole imports by the command of scenes that link names which only POSIX has.

#include "BlendFile.h"
#include "CommandFixture.h"

namespace Halvern::Test {

using namespace Qt::StringLiterals;

namespace {

class PosixBlendImport : public CommandFixture
{};

} // namespace

TEST_F(PosixBlendImport, PicturesWithAColonInTheirNamesComeAndAreFoundAgain)
{
    BlendFile content;
    content.Add("IM", "Image",
                {{"id.name", "IMa"}, {"name", "//Bild 12:30:00.png"}, {"source", 1}});
    content.Add("IM", "Image", {{"id.name", "IMb"}, {"name", "//../12:30/b.png"}, {"source", 1}});
    tree.File(u"work/s/a.blend"_s, content.Bytes());
    tree.File(u"work/s/Bild 12:30:00.png"_s, "a").File(u"work/12:30/b.png"_s, "b");
    const QStringList arguments{u"s/a.blend"_s, u"--to"_s, u"Demo"_s};
    const CommandResult result = Import(arguments);
    EXPECT_EQ(result.exitCode, 0) << ::testing::PrintToString(result);
    QByteArray moved = content.Bytes();
    moved.replace(QByteArray("//../12:30/b.png"), QByteArray("//12:30/b.png\0\0\0", 16));
    const FileTree::Snapshot expected{{u"Demo/Bild 12:30:00.png"_s, "a"},
                                      {u"Demo/12:30/b.png"_s, "b"},
                                      {u"Demo/a.blend"_s, moved}};
    EXPECT_EQ(Cloud(), expected);
    const CommandResult again = Import(arguments);
    EXPECT_EQ(again.exitCode, 0) << ::testing::PrintToString(again);
    EXPECT_EQ(again.Lines().filter(u"unchanged  "_s).size(), 3) << again.out.toStdString();
    EXPECT_EQ(Cloud(), expected);
}

} // namespace Halvern::Test
