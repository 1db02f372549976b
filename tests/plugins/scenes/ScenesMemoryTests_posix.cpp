// SPDX-License-Identifier: Apache-2.0

// Large scenes are numbers for the most part, which nobody has to hold more than once.

#include "PeakMemory.h"
#include "ScenesFixture.h"

namespace Halvern::Test {

using ScenesMemory = ScenesFixture;

TEST_F(ScenesMemory, IsLittleMoreThanTheFileHas)
{
    constexpr std::size_t size = std::size_t(48) << 20;
    constexpr std::size_t more = std::size_t(16) << 20;
    const QByteArray numbers = QByteArray("0.25 1 -7.125 ").repeated(10'000);
    const auto rows = static_cast<qsizetype>(size) / numbers.size();
    const struct
    {
        const char16_t* name;
        QByteArray content;
        Link link;
    } scenes[] = {
        {u"a.dae",
         Collada("<image id='w'><init_from>a.png</init_from></image>" +
                 ("<float_array>" + numbers + "</float_array>\n").repeated(rows)),
         L(u"#w/init_from", u"a.png")},
        {u"a.x3d",
         X3d("<Inline url='\"a.wrl\"'/>" +
             ("<Coordinate point='" + numbers + "'/>").repeated(rows)),
         L(u"Inline/url", u"a.wrl")},
        {u"a.wrl",
         Vrml("Inline { url \"a.wrl\" }" +
              ("Coordinate { point [ " + numbers + "] }").repeated(rows)),
         L(u"Inline/url", u"a.wrl")},
    };
    for (const auto& scene : scenes) {
        const QString name = QString::fromUtf16(scene.name);
        tree.File(name, scene.content);
        const PeakMemory peak;
        EXPECT_EQ(Read(name), Links{scene.link}) << name.toStdString();
        EXPECT_GT(peak.Bytes(), size / 2) << name.toStdString();
        EXPECT_LT(peak.Bytes(), size + more + PeakMemory::Overhead) << name.toStdString();
    }
}

} // namespace Halvern::Test
