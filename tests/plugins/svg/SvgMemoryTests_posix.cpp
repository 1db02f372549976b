// SPDX-License-Identifier: Apache-2.0

// A large drawing is packed into a few kilobytes; reading it must not take many times its size.

#include "PeakMemory.h"
#include "SvgFixture.h"

#include "pluginkit/Compression.h"

namespace Halvern::Test {

using namespace Qt::StringLiterals;

namespace {

constexpr qsizetype MiB = 1 << 20;
constexpr qsizetype Size = 60 * MiB;
constexpr std::size_t LeastMemory = Size / 2;
constexpr std::size_t MostMemory = 4 * Size + PeakMemory::Overhead;

QByteArray Packed(const QByteArray& text)
{
    return QByteArray::fromStdString(
        PluginKit::Compressed(PluginKit::Compression::Gzip, text.toStdString()));
}

class SvgMemory : public SvgFixture
{
protected:
    /// Compressed: `filling` over and over between the two ends.
    static QByteArray Bomb(const QByteArray& head, const QByteArray& filling,
                           const QByteArray& tail)
    {
        const QByteArray part = filling.repeated(MiB / filling.size());
        return Packed(head) + Packed(part).repeated(Size / MiB) + Packed(tail);
    }
};

} // namespace

TEST_F(SvgMemory, IsBoundedForWhateverADrawingIsFullOf)
{
    const struct
    {
        const char* what;
        QByteArray head;
        QByteArray filling;
        QByteArray tail;
        const char* message;
    } rows[] = {
        {"a style", "<svg style='", "a", "'/>",
         "a style sheet of more than 16 MiB at byte 12 of the unpacked text"},
        {"an address", "<svg><a href='", "a", "'/></svg>",
         "an address of more than 64 KiB at byte 14 of the unpacked text"},
        {"an address in an instruction", "<?xml-stylesheet href='", "a", "'?><svg/>",
         "an address of more than 64 KiB at byte 23 of the unpacked text"},
        {"attributes", "<svg ", "a='' ", "/>",
         "a tag with more than 500000 attributes at byte 0 of the unpacked text"},
        {"a name", "<svg ", "a", "=''/>",
         "a name of more than 4096 bytes at byte 0 of the unpacked text"},
    };
    for (const auto& row : rows) {
        const QByteArray bomb = Bomb(row.head, row.filling, row.tail);
        ASSERT_LT(bomb.size(), Size / 500);
        const PeakMemory peak;
        EXPECT_EQ(ReadFailure(u"a.svgz"_s, bomb).toStdString(), row.message);
        EXPECT_GT(peak.Bytes(), LeastMemory) << row.what;
        EXPECT_LT(peak.Bytes(), MostMemory) << row.what;
    }
}

TEST_F(SvgMemory, IsBoundedForAPictureInsideOfTheDrawing)
{
    tree.File(u"a.svgz"_s, Bomb("<svg><image href='data:", "a", "'/></svg>"));
    const PeakMemory peak;
    EXPECT_EQ(Read(u"a.svgz"_s), Links{});
    EXPECT_LT(peak.Bytes(), MostMemory);
}

} // namespace Halvern::Test
