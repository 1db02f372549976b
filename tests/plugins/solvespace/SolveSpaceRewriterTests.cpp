// SPDX-License-Identifier: Apache-2.0

#include "SolveSpaceFixture.h"

#include "pluginkit/FileScanner.h"

namespace Halvern::Test {

using namespace Qt::StringLiterals;

namespace {

class SolveSpaceRewriter : public SolveSpaceFixture
{
protected:
    QByteArray Changed(const QByteArray& records, const Links& links)
    {
        return Rewritten(m_name, File(records), links);
    }
};

} // namespace

TEST_F(SolveSpaceRewriter, OnlyThePathThatIsNamedChanges)
{
    EXPECT_EQ(Changed(Group("3", "a.slvs") + Group("4", "a.slvs") +
                          Picture("Request", "4", "a.png") + Picture("Entity", "4", "a.png"),
                      {LinkTo(u"group 4", u"../Größe/a=b.slvs"), LinkTo(u"entity 4", u"x/a.png")}),
              File(Group("3", "a.slvs") + Group("4", "../Größe/a=b.slvs") +
                   Picture("Request", "4", "a.png") + Picture("Entity", "4", "x/a.png")));
}

TEST_F(SolveSpaceRewriter, RecordsWithOneHandleKeepTheirOrder)
{
    EXPECT_EQ(
        Changed(Group("3", "a.slvs") + Group("3", "a.slvs"), {LinkTo(u"group 3#2", u"b.slvs")}),
        File(Group("3", "a.slvs") + Group("3", "b.slvs")));
}

TEST_F(SolveSpaceRewriter, ASecondNameChangesOnItsOwnAlsoWhereItLeadsNowhere)
{
    EXPECT_EQ(Changed(Group("3", "a.slvs", "C:\\x\\a.slvs"),
                      {LinkTo(u"group 3 absolute", u"lib/a.slvs")}),
              File(Group("3", "a.slvs", "lib/a.slvs")));
}

TEST_F(SolveSpaceRewriter, LineEndsStay)
{
    QByteArray before = File(Group("3", "a.slvs"));
    QByteArray after = File(Group("3", "longer/b.slvs"));
    before.replace("\n", "\r\n");
    after.replace("\n", "\r\n");
    EXPECT_EQ(Rewritten(m_name, before, {LinkTo(u"group 3", u"longer/b.slvs")}), after);
}

TEST_F(SolveSpaceRewriter, ANameThatIsRightAlreadyKeepsItsBytes)
{
    const QDateTime time = QDateTime::fromSecsSinceEpoch(1'000'000'000);
    tree.File(m_name, File(Group("3", "x\\\xE4.slvs"))).Touch(m_name, time);
    EXPECT_TRUE(Repath(m_name, {LinkTo(u"group 3", u"x/ä.slvs")}));
    EXPECT_EQ(tree.Modified(m_name), time);
}

TEST_F(SolveSpaceRewriter, AFileOfManyBlocksKeepsEverythingElse)
{
    QByteArray shapes;
    const QByteArray noise = PatternBytes(2 * qint64(PluginKit::FileScanner::BlockSize)).toHex();
    for (qsizetype at = 0; at < noise.size(); at += 60)
        shapes += "SCtrl " + noise.mid(at, 60) + '\n';
    EXPECT_TRUE(
        Changed(shapes + Group("3", "a.slvs") + shapes, {LinkTo(u"group 3", u"longer/b.slvs")}) ==
        File(shapes + Group("3", "longer/b.slvs") + shapes));
}

TEST_F(SolveSpaceRewriter, AnIdThatIsNotInTheFileFailsByName)
{
    for (const char16_t* id :
         {u"group 4", u"group 3 absolute", u"group 3#2", u"request 3", u"group", u"3", u""}) {
        EXPECT_EQ(RewriteFailure(m_name, File(Group("3", "a.slvs")), {LinkTo(id, u"x.slvs")}),
                  u"the file has no link "_s + QString::fromUtf16(id));
    }
}

TEST_F(SolveSpaceRewriter, ANameThatCannotBeWrittenFailsAndNothingIs)
{
    for (const char16_t* path : {u"a\nb.slvs", u"a\rb.slvs"}) {
        EXPECT_EQ(RewriteFailure(m_name, File(Group("3", "a.slvs") + Group("4", "a.slvs")),
                                 {LinkTo(u"group 3", u"c.slvs"), LinkTo(u"group 4", path)}),
                  u"a model cannot hold the path "_s + QString::fromUtf16(path));
    }
}

} // namespace Halvern::Test
