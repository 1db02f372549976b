// SPDX-License-Identifier: Apache-2.0

// A file that nobody can read links from is told apart from a file without links.

#include "ScenarioFixture.h"

namespace Halvern::Test {

namespace {

class UnknownFormats : public ScenarioFixture
{
protected:
    UnknownFormats()
    {
        tree.File(u"work/proj/plan.dwg"_s, "unknown")
            .File(u"work/proj/detail.DWG"_s, "unknown")
            .File(u"work/proj/part.sldprt"_s, "unknown");
        Design(u"work/proj/empty.gltf"_s, {});
    }
};

} // namespace

TEST_F(UnknownFormats, AreNamedByLinks)
{
    const CommandResult unknown = Run({u"links"_s, u"proj/plan.dwg"_s});
    EXPECT_TRUE(unknown.out.contains(u"no plug-in reads .dwg"_s))
        << ::testing::PrintToString(unknown);
    const CommandResult none = Run({u"links"_s, u"proj/empty.gltf"_s});
    EXPECT_TRUE(none.out.contains(u"no links"_s)) << ::testing::PrintToString(none);
    EXPECT_FALSE(none.out.contains(u"plug-in"_s));
}

TEST_F(UnknownFormats, AreCountedByTypeInTheSummaryOfAnImport)
{
    for (int run = 0; run < 2; ++run) {
        const CommandResult result = Import({u"proj"_s});
        EXPECT_EQ(result.exitCode, 0) << ::testing::PrintToString(result);
        EXPECT_TRUE(result.out.contains(u"no plug-in reads"_s)) << ::testing::PrintToString(result);
        EXPECT_TRUE(result.out.contains(u".dwg"_s) && result.out.contains(u".sldprt"_s));
        EXPECT_FALSE(result.out.contains(u"reads .gltf"_s));
    }
    const QJsonObject unknown = Report({u"proj"_s}).summary[u"unknownFormats"].toObject();
    EXPECT_EQ(unknown[u"dwg"].toInt(), 2);
    EXPECT_EQ(unknown[u"sldprt"].toInt(), 1);
    EXPECT_EQ(unknown.size(), 2);
}

} // namespace Halvern::Test
