// SPDX-License-Identifier: Apache-2.0

#include "ScenarioFixture.h"

namespace Halvern::Test {

namespace {

class ImpossibleNames : public ScenarioFixture
{};

} // namespace

TEST_F(ImpossibleNames, ANameThatHasNoRoomForANumberFailsItsFileWhenItIsToBeRenamed)
{
    const QString name = QString(251, u'n') + u".txt"_s;
    tree.File(u"work/proj/"_s + name, "new")
        .File(u"work/proj/good.txt"_s, "good")
        .File(u"cloud/proj/"_s + name, "old");
    const QStringList arguments{u"proj"_s, u"--collisions"_s, u"rename"_s};
    const ImportReport dry = Report(arguments + QStringList{u"--dry-run"_s});
    const ImportReport report = Report(arguments);
    EXPECT_NE(report.exitCode, 0) << ::testing::PrintToString(report);
    EXPECT_EQ(dry.exitCode, report.exitCode);
    EXPECT_EQ(dry.Lines(), report.Lines());
    EXPECT_EQ(tree.Read(u"cloud/proj/"_s + name), "old");
}

} // namespace Halvern::Test
