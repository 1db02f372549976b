// SPDX-License-Identifier: Apache-2.0

// What cannot be written is found in the plan: a dry run says the same as the import.

#include "ScenarioFixture.h"

namespace Halvern::Test {

namespace {

class ImpossiblePlaces : public ScenarioFixture
{
protected:
    /// The import fails this source, brings the others, and its dry run says so, too.
    ImportReport ExpectFailureOf(const QString& source, const QStringList& arguments)
    {
        const FileTree::Snapshot before = Cloud();
        const ImportReport dry = Report(arguments + QStringList{u"--dry-run"_s});
        EXPECT_EQ(Cloud(), before);
        const ImportReport report = Report(arguments);
        EXPECT_EQ(report.exitCode, 1) << ::testing::PrintToString(report);
        EXPECT_EQ(dry.exitCode, report.exitCode);
        EXPECT_EQ(report.StatusOf(source), u"failed"_s) << ::testing::PrintToString(report);
        EXPECT_FALSE(report.Of(source).reason.isEmpty());
        EXPECT_EQ(dry.Lines(), report.Lines());
        return report;
    }
};

} // namespace

TEST_F(ImpossiblePlaces, ALinkThatWouldGetTooLongFailsItsFileAndIsNeverCut)
{
    const QString far = QString(100, u'f') + u'/' + QString(100, u'g') + u"/part.tlk"_s;
    const QString deep = u"1/2/3/4/5/6/7/8/9/10/11/12/13/14/15/16/17/18/19/20"_s;
    tree.File(u"cloud/"_s + far, "part")
        .File(u"work/top.tlk"_s, "link 1 ../cloud/" + far.toUtf8() + "\nlink 2 good.tlk\n")
        .File(u"work/good.tlk"_s, "good");
    ExpectFailureOf(u"work/top.tlk"_s, {u"top.tlk"_s, u"--to"_s, deep});
    EXPECT_FALSE(tree.Exists(u"cloud/"_s + deep + u"/top.tlk"_s));
    EXPECT_EQ(tree.Read(u"cloud/"_s + deep + u"/good.tlk"_s), "good");
}

TEST_F(ImpossiblePlaces, ALinkThatWouldGetTooLongKeepsAMovedSource)
{
    const QString far = QString(100, u'f') + u'/' + QString(100, u'g') + u"/part.tlk"_s;
    const QString deep = u"1/2/3/4/5/6/7/8/9/10/11/12/13/14/15/16/17/18/19/20"_s;
    const QByteArray top = "link 1 ../cloud/" + far.toUtf8() + '\n';
    tree.File(u"cloud/"_s + far, "part").File(u"work/top.tlk"_s, top);
    ExpectFailureOf(u"work/top.tlk"_s, {u"top.tlk"_s, u"--to"_s, deep, u"--move"_s});
    EXPECT_EQ(tree.Read(u"work/top.tlk"_s), top);
}

TEST_F(ImpossiblePlaces, AFileWhereAFolderMustBeFailsWhatGoesBelowItAndStays)
{
    Design(u"work/proj/top.svg"_s, {u"../lib/part.bin"_s, u"good.bin"_s});
    tree.File(u"work/lib/part.bin"_s, "part")
        .File(u"work/proj/good.bin"_s, "good")
        .File(u"cloud/Demo/lib"_s, "a file");
    for (const QString& policy : {u"stop"_s, u"keep"_s, u"replace"_s}) {
        tree.Remove(u"cloud"_s).File(u"cloud/Demo/lib"_s, "a file");
        ExpectFailureOf(u"work/lib/part.bin"_s,
                        {u"proj/top.svg"_s, u"--to"_s, u"Demo"_s, u"--collisions"_s, policy});
        EXPECT_EQ(tree.Read(u"cloud/Demo/lib"_s), "a file");
        EXPECT_EQ(tree.Read(u"cloud/Demo/good.bin"_s), "good");
    }
}

} // namespace Halvern::Test
