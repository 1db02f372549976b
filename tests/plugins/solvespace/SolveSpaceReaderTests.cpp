// SPDX-License-Identifier: Apache-2.0

#include "SolveSpaceFixture.h"

#include "pluginkit/FileScanner.h"

namespace Halvern::Test {

using namespace Qt::StringLiterals;

namespace {

using SolveSpaceReader = SolveSpaceFixture;

} // namespace

TEST_F(SolveSpaceReader, LinkedModelsAndPicturesAreLinksNamedByTheirHandles)
{
    EXPECT_EQ(
        Records(Group("00000003", "../Teile/Größe 木.slvs") +
                Picture("Request", "00000004", "a b.png") +
                Picture("Entity", "00040000", "a b.png")),
        (Links{LinkTo(u"group 00000003", u"../Teile/Größe 木.slvs"),
               LinkTo(u"request 00000004", u"a b.png"), LinkTo(u"entity 00040000", u"a b.png")}));
}

TEST_F(SolveSpaceReader, AnEqualsSignBelongsToAName)
{
    EXPECT_EQ(Records(Group("3", "a=b = c.slvs")), (Links{LinkTo(u"group 3", u"a=b = c.slvs")}));
}

TEST_F(SolveSpaceReader, TwoGroupsWithOneModelAreTwoLinks)
{
    EXPECT_EQ(Records(Group("00000003", "a.slvs") + Group("00000004", "a.slvs")),
              (Links{LinkTo(u"group 00000003", u"a.slvs"), LinkTo(u"group 00000004", u"a.slvs")}));
    EXPECT_EQ(Records(Group("3", "a.slvs") + Group("3", "") + Group("3", "b.slvs")),
              (Links{LinkTo(u"group 3", u"a.slvs"), LinkTo(u"group 3#2", u"b.slvs")}));
}

TEST_F(SolveSpaceReader, AModelWithoutAnyHasNoLinks)
{
    EXPECT_EQ(Records(""), Links{});
    EXPECT_EQ(Records("Group.h.v=3\nGroup.impFileRel=\nAddGroup\n"), Links{});
}

TEST_F(SolveSpaceReader, BackslashesOfOldVersionsAreSlashes)
{
    EXPECT_EQ(Records(Group("3", "..\\parts\\a.slvs")),
              (Links{LinkTo(u"group 3", u"../parts/a.slvs")}));
}

TEST_F(SolveSpaceReader, NamesOfOldVersionsMayBeLatin1)
{
    EXPECT_EQ(Records(Group("3", "Gr\xF6\xDF"
                                 "e.slvs")),
              (Links{LinkTo(u"group 3", u"Größe.slvs")}));
}

TEST_F(SolveSpaceReader, ASecondNameIsALinkWhereItLeadsToAFileOrIsTheOnlyOne)
{
    const QByteArray records = Group("3", "b.slvs", "../lib/a.slvs");
    EXPECT_EQ(Records(records), (Links{LinkTo(u"group 3", u"b.slvs")}));
    tree.File(u"lib/a.slvs"_s);
    EXPECT_EQ(Records(records), (Links{LinkTo(u"group 3 absolute", u"../lib/a.slvs"),
                                       LinkTo(u"group 3", u"b.slvs")}));
    EXPECT_EQ(Records(Group("3", "", "C:\\lost\\a.slvs")),
              (Links{LinkTo(u"group 3 absolute", u"C:/lost/a.slvs")}));
}

TEST_F(SolveSpaceReader, TheLastOfSeveralNamesOfARecordCounts)
{
    EXPECT_EQ(Records("Group.h.v=3\nGroup.impFileRel=a.slvs\nGroup.impFileRel=b.slvs\nAddGroup\n"),
              (Links{LinkTo(u"group 3", u"b.slvs")}));
}

TEST_F(SolveSpaceReader, FoldersAreNoLinks)
{
    tree.Folder(u"p/parts"_s);
    EXPECT_EQ(Records(Group("3", "parts") + Group("4", "..")), Links{});
}

TEST_F(SolveSpaceReader, LinesMayEndAsMailLeavesThem)
{
    QByteArray file = File(Group("3", "a.slvs"));
    file.replace("\n", "\r\n");
    tree.File(m_name, file);
    EXPECT_EQ(Read(m_name), (Links{LinkTo(u"group 3", u"a.slvs")}));
    file.replace("\xB1\xB2\xB3", "±²³");
    tree.File(m_name, file);
    EXPECT_EQ(Read(m_name), (Links{LinkTo(u"group 3", u"a.slvs")}));
}

TEST_F(SolveSpaceReader, LinksAreFoundAcrossTheEndsOfBlocks)
{
    const auto block = static_cast<qsizetype>(PluginKit::FileScanner::BlockSize);
    const QByteArray group = Group("00000003", "a.slvs");
    const QByteArray filler = "CurvePt 0 " + QByteArray(100, '1') + '\n';
    for (qsizetype shift = 0; shift < group.size(); ++shift) {
        const qsizetype before = File("").indexOf("Param.h.v");
        const qsizetype room = block - before - shift;
        const QByteArray lines = filler.repeated(room / filler.size()) + " " +
                                 QByteArray(room % filler.size(), '0') + '\n';
        ASSERT_EQ(Records(lines + group), (Links{LinkTo(u"group 00000003", u"a.slvs")})) << shift;
    }
}

TEST_F(SolveSpaceReader, ReadingLeavesTheFileAlone)
{
    const QDateTime time = QDateTime::fromSecsSinceEpoch(1'000'000'000);
    tree.File(m_name, File(Group("3", "b.slvs"))).Touch(m_name, time);
    Read(m_name);
    EXPECT_EQ(tree.Contents(), (FileTree::Snapshot{{m_name, File(Group("3", "b.slvs"))}}));
    EXPECT_EQ(tree.Modified(m_name), time);
}

} // namespace Halvern::Test
