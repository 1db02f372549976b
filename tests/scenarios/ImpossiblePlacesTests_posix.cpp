// SPDX-License-Identifier: Apache-2.0

#include "ScenarioFixture.h"

namespace Halvern::Test {

namespace {

class ImpossibleNames : public ScenarioFixture
{};

} // namespace

TEST_F(ImpossibleNames, ANameWithoutRoomForANumberIsFoundInThePlan)
{
    const QString name = QString(251, u'n') + u".txt"_s;
    tree.File(u"work/proj/"_s + name, "new")
        .File(u"work/proj/good.txt"_s, "good")
        .File(u"cloud/proj/"_s + name, "old");
    const QStringList arguments{u"proj"_s, u"--collisions"_s, u"rename"_s};
    const ImportReport dry = Report(arguments + QStringList{u"--dry-run"_s});
    const ImportReport report = Report(arguments);
    EXPECT_EQ(dry.exitCode, report.exitCode);
    EXPECT_EQ(dry.Lines(), report.Lines());
    // Either it gets a name that fits, or the import says that it has none.
    const QString copy = report.Of(u"work/proj/"_s + name).target;
    EXPECT_TRUE(report.exitCode != 0 || Stamp(copy).content == "new")
        << ::testing::PrintToString(report);
    EXPECT_EQ(tree.Read(u"cloud/proj/"_s + name), "old");
}

} // namespace Halvern::Test
