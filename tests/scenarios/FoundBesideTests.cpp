// SPDX-License-Identifier: Apache-2.0

// Drawings whose plug-in looks beside them for a file that is not where they say.

#include "ScenarioFixture.h"

namespace Halvern::Test {

namespace {

class FoundBeside : public ScenarioFixture
{
protected:
    /// A drawing with a picture, and with a material: its map is only a link where it is there, so
    /// that the copy is made ready beside it.
    void Draw(const QString& file, const QByteArray& picture)
    {
        const auto group = [](int code, const QByteArray& value) {
            return QByteArray::number(code).rightJustified(3) + '\n' + value + '\n';
        };
        tree.File(file, group(0, "SECTION") + group(2, "HEADER") + group(9, "$ACADVER") +
                            group(1, "AC1032") + group(0, "ENDSEC") + group(0, "SECTION") +
                            group(2, "OBJECTS") + group(0, "IMAGEDEF") + group(5, "5A") +
                            group(1, picture) + group(0, "MATERIAL") + group(5, "7F") +
                            group(3, "m.png") + group(0, "ENDSEC") + group(0, "EOF"));
        tree.File(u"work/p/doc/x.png"_s, "picture").File(u"work/p/doc/m.png"_s, "map");
    }
};

} // namespace

TEST_F(FoundBeside, AFileIsNamedByTheCopyAsItIs)
{
    for (const QByteArray& picture : {QByteArray("..\\doc\\x.png"), QByteArray("C:\\Pics\\x.png")}) {
        Draw(u"work/p/doc/two.dxf"_s, picture);
        const ImportReport report = Report({u"p/doc/two.dxf"_s, u"--to"_s, u"Demo"_s});
        EXPECT_EQ(report.exitCode, 0) << ::testing::PrintToString(report);
        const QByteArray copy = tree.Read(u"cloud/Demo/two.dxf"_s);
        EXPECT_FALSE(copy.contains(picture)) << copy.toStdString();
        EXPECT_TRUE(copy.contains("\nx.png\n")) << copy.toStdString();
        EXPECT_TRUE(copy.contains("\nm.png\n")) << copy.toStdString();
        const ImportReport again = Report({u"p/doc/two.dxf"_s, u"--to"_s, u"Demo"_s});
        EXPECT_EQ(again.Statuses(), QStringList(3, u"unchanged"_s))
            << ::testing::PrintToString(again);
        tree.Remove(u"cloud/Demo"_s);
    }
}

} // namespace Halvern::Test
