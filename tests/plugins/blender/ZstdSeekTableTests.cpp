// SPDX-License-Identifier: Apache-2.0

#include "blender/ZstdSeekTable.h"

#include "FileTree.h"

#include "pluginkit/Compression.h"
#include "pluginkit/FormatError.h"

#include <gtest/gtest.h>

namespace Halvern::Test {

namespace {

using namespace PluginKit;
using namespace Formats::Blender;
using namespace Qt::StringLiterals;

class ZstdSeekTables : public ::testing::Test
{
protected:
    InputFile File(const std::string& bytes)
    {
        const QString name = u"Größe.bin"_s;
        m_tree.File(name, QByteArray::fromStdString(bytes));
        return InputFile(std::filesystem::path(m_tree.Path(name).toStdU16String()));
    }

private:
    FileTree m_tree;
};

} // namespace

TEST_F(ZstdSeekTables, TheTableOfFramesIsFoundAtTheEnd)
{
    const std::string first = Compressed(Compression::Zstd, "one ");
    const std::string second = Compressed(Compression::Zstd, "two");
    const std::vector<ZstdFrame> frames = {{first.size(), 4}, {second.size(), 3}};
    const InputFile file = File(first + second + ZstdSeekTable(frames));
    const auto found = ReadZstdSeekTable(file);
    ASSERT_TRUE(found);
    ASSERT_EQ(found->size(), 2U);
    EXPECT_EQ((*found)[1].size, second.size());
    EXPECT_EQ((*found)[1].contentSize, 3U);
    EXPECT_EQ(ReadDecompressed(file, 7), "one two");
}

TEST_F(ZstdSeekTables, ATableThatDoesNotCoverTheFileIsNoTable)
{
    const std::string frame = Compressed(Compression::Zstd, "one");
    const auto with = [](std::string bytes, std::size_t fromEnd, char c) {
        bytes[bytes.size() - fromEnd] = c;
        return bytes;
    };
    const std::string good = frame + ZstdSeekTable({{frame.size(), 3}});
    ASSERT_TRUE(ReadZstdSeekTable(File(good)));
    const std::pair<const char*, std::string> rows[] = {
        {"no table", frame},
        {"a frame that is too short", frame + ZstdSeekTable({{frame.size() - 1, 3}})},
        {"a frame beyond the file", frame + ZstdSeekTable({{0xFFFFFFFF, 3}})},
        {"more frames than there is room", with(good, 9, '\x7F')},
        {"billions of frames", with(good, 6, '\xFF')},
        {"check sums", with(good, 5, '\x80')},
        {"another magic number", with(good, 1, 'x')},
        {"something in front", "x" + good},
        {"another size of the table", with(good, 9 + 8 + 4, '\x30')},
        {"nothing", ""},
    };
    for (const auto& [what, bytes] : rows)
        EXPECT_FALSE(ReadZstdSeekTable(File(bytes))) << what;
}

TEST_F(ZstdSeekTables, AFrameBeyondWhatTheTableCanSayIsRefused)
{
    EXPECT_THROW(ZstdSeekTable({{std::uint64_t(1) << 32, 0}}), FormatError);
}

} // namespace Halvern::Test
