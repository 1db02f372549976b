// SPDX-License-Identifier: Apache-2.0

// Files that stay as they are where symbolic and hard links lead to them.

#include "ScenarioFixture.h"

#include <QtCore/QFile>

#include <unistd.h>

namespace Halvern::Test {

namespace {

class UntouchedFilesBehindLinks : public ScenarioFixture
{
protected:
    UntouchedFilesBehindLinks()
    {
        Design(u"work/proj/top.gltf"_s, {u"../lib/part.bin"_s}, "source");
        tree.File(u"work/lib/part.bin"_s, "part").Folder(u"outside"_s).Folder(u"cloud/Demo"_s);
        Design(u"outside/other.gltf"_s, {u"../lib/part.bin"_s}, "other");
    }
    void Link(const QString& at, const QString& to)
    {
        ASSERT_TRUE(QFile::link(tree.Path(to), tree.Path(at)));
    }
    void HardLink(const QString& at, const QString& to)
    {
        ASSERT_EQ(::link(QFile::encodeName(tree.Path(to)).constData(),
                         QFile::encodeName(tree.Path(at)).constData()),
                  0);
    }
    ImportReport ImportWith(const QString& policy) const
    {
        return Report({u"proj/top.gltf"_s, u"--to"_s, u"Demo"_s, u"--collisions"_s, policy});
    }
};

} // namespace

TEST_F(UntouchedFilesBehindLinks, AKeptSymbolicLinkAndTheFileThatItLeadsToStayAsTheyAre)
{
    Link(u"cloud/Demo/top.gltf"_s, u"outside/other.gltf"_s);
    const FileStamp link = Stamp(u"cloud/Demo/top.gltf"_s);
    const auto outside = Stamps(u"outside"_s);
    ImportWith(u"keep"_s);
    EXPECT_EQ(Stamp(u"cloud/Demo/top.gltf"_s), link);
    EXPECT_EQ(Stamps(u"outside"_s), outside);
}

TEST_F(UntouchedFilesBehindLinks, AFileIsNeverReplacedThroughASymbolicLink)
{
    Link(u"cloud/Demo/top.gltf"_s, u"outside/other.gltf"_s);
    const auto outside = Stamps(u"outside"_s);
    for (const QString& policy : {u"stop"_s, u"rename"_s, u"replace"_s}) {
        ImportWith(policy);
        EXPECT_EQ(Stamps(u"outside"_s), outside) << policy.toStdString();
    }
}

TEST_F(UntouchedFilesBehindLinks,
       ASymbolicLinkThatLeadsNowhereIsInTheWayAndNothingIsMadeWhereItLeads)
{
    Link(u"cloud/Demo/top.gltf"_s, u"outside/new.gltf"_s);
    const auto outside = Stamps(u"outside"_s);
    EXPECT_NE(ImportWith(u"stop"_s).exitCode, 0);
    EXPECT_EQ(Stamp(u"cloud/Demo/top.gltf"_s).kind, "link");
    ImportWith(u"replace"_s);
    EXPECT_EQ(Stamps(u"outside"_s), outside);
}

TEST_F(UntouchedFilesBehindLinks, AReplacedSymbolicLinkMakesWayItselfAndIsSetAside)
{
    for (const QString& to : {u"outside/other.gltf"_s, u"outside/none.gltf"_s}) {
        tree.Remove(u"cloud"_s).Folder(u"cloud/Demo"_s);
        Link(u"cloud/Demo/top.gltf"_s, to);
        FileStamp link = Stamp(u"cloud/Demo/top.gltf"_s);
        const auto outside = Stamps(u"outside"_s);
        const ImportReport planned = Report({u"proj/top.gltf"_s, u"--to"_s, u"Demo"_s,
                                             u"--collisions"_s, u"replace"_s, u"--dry-run"_s});
        const ImportReport report = ImportWith(u"replace"_s);
        EXPECT_EQ(report.exitCode, 0) << ::testing::PrintToString(report);
        EXPECT_EQ(report.StatusOf(u"work/proj/top.gltf"_s), u"replaced"_s);
        EXPECT_TRUE(report.Of(u"work/proj/top.gltf"_s)
                        .reason.endsWith(tree.Path(u"cloud/Demo/top.gltf.link"_s)))
            << ::testing::PrintToString(report);
        EXPECT_EQ(planned.Lines(), report.Lines());
        EXPECT_EQ(Stamp(u"cloud/Demo/top.gltf"_s).kind, "file");
        EXPECT_EQ(tree.Read(u"cloud/Demo/top.gltf"_s),
                  DesignFile(u"top.gltf"_s, {u"lib/part.bin"_s}, "source"));
        EXPECT_EQ(Stamp(u"cloud/Demo/top.gltf.link"_s).kind, "link");
        EXPECT_EQ(QFile::symLinkTarget(tree.Path(u"cloud/Demo/top.gltf.link"_s)), tree.Path(to));
        EXPECT_EQ(Stamps(u"outside"_s), outside);
        EXPECT_EQ(ImportWith(u"replace"_s).Statuses(), QStringList(2, u"unchanged"_s));
    }
}

TEST_F(UntouchedFilesBehindLinks, ALinkThatIsSetAsideTakesNobodysName)
{
    Link(u"cloud/Demo/top.gltf"_s, u"outside/other.gltf"_s);
    tree.File(u"cloud/Demo/top.gltf.link"_s, "somebody's");
    EXPECT_EQ(ImportWith(u"replace"_s).exitCode, 0);
    EXPECT_EQ(tree.Read(u"cloud/Demo/top.gltf.link"_s), "somebody's");
    EXPECT_EQ(Stamp(u"cloud/Demo/top.gltf (2).link"_s).kind, "link");
}

TEST_F(UntouchedFilesBehindLinks, ASourceIsNotRewrittenThroughAHardLinkAtItsTarget)
{
    HardLink(u"cloud/Demo/top.gltf"_s, u"work/proj/top.gltf"_s);
    const auto before = Stamps(u"work"_s);
    for (const QString& policy : {u"stop"_s, u"keep"_s, u"rename"_s, u"replace"_s}) {
        const ImportReport report = ImportWith(policy);
        EXPECT_EQ(Stamps(u"work"_s), before) << policy.toStdString();
    }
}

TEST_F(UntouchedFilesBehindLinks, AnotherNameOfACopyThatIsReplacedKeepsItsContent)
{
    ASSERT_EQ(ImportWith(u"stop"_s).exitCode, 0);
    HardLink(u"outside/second name.gltf"_s, u"cloud/Demo/top.gltf"_s);
    const QByteArray before = tree.Read(u"outside/second name.gltf"_s);
    Save(u"work/proj/top.gltf"_s, DesignFile(u"top.gltf"_s, {u"../lib/part.bin"_s}, "second"));
    EXPECT_EQ(ImportWith(u"stop"_s).exitCode, 0);
    EXPECT_EQ(tree.Read(u"outside/second name.gltf"_s), before);
    EXPECT_TRUE(tree.Read(u"cloud/Demo/top.gltf"_s).contains("second"));
}

} // namespace Halvern::Test
