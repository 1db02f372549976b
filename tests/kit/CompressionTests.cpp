// SPDX-License-Identifier: Apache-2.0

#include "FormatFixture.h"

#include "pluginkit/Compression.h"
#include "pluginkit/FormatError.h"

#include <random>

namespace Halvern::Test {

namespace {

using namespace PluginKit;
using namespace Qt::StringLiterals;

class Compressing : public ::testing::TestWithParam<Compression>
{
protected:
    InputFile File(std::string_view bytes)
    {
        m_tree.File(m_name, QByteArray(bytes.data(), static_cast<qsizetype>(bytes.size())));
        return InputFile(std::filesystem::path(m_tree.Path(m_name).toStdU16String()));
    }
    /// The reason for which the bytes cannot be read; empty when they can.
    std::string Failure(std::string_view bytes, std::uint64_t limit = UINT64_MAX)
    {
        try {
            ReadDecompressed(File(bytes), limit);
            return {};
        } catch (const FormatError& error) {
            return error.what();
        }
    }

private:
    FileTree m_tree;
    const QString m_name = u"Größe.bin"_s;
};

using Gzip = Compressing;
using Zstd = Compressing;

/// Compresses to about a third; never repeats.
std::string Content(std::size_t size)
{
    std::mt19937 random(7);
    std::string content(size, '\0');
    for (char& c : content)
        c = static_cast<char>("abcdef"[random() % 6]);
    return content;
}

constexpr std::size_t LargerThanEveryBuffer = 1'000'003;

} // namespace

TEST_P(Compressing, WhatIsWrittenIsReadAgain)
{
    for (const std::size_t size : {std::size_t(0), std::size_t(1), LargerThanEveryBuffer}) {
        const std::string content = Content(size);
        const std::string bytes = Compressed(GetParam(), content);
        const InputFile file = File(bytes);
        EXPECT_EQ(CompressionOf(file), GetParam());
        EXPECT_TRUE(ReadDecompressed(file, size) == content) << size;
    }
}

TEST_P(Compressing, PiecesOfAnySizeMakeTheSameContent)
{
    const std::string content = Content(LargerThanEveryBuffer);
    std::string bytes;
    Compressor compressor(GetParam(), [&](std::string_view part) { bytes.append(part); });
    for (std::size_t at = 0, part = 1; at < content.size(); at += part, part = part * 3 + 1)
        compressor.Write(std::string_view(content).substr(at, part));
    compressor.Finish();
    const InputFile file = File(bytes);
    Decompressor decompressor(file, content.size());
    std::string read(content.size() + 10, '\0');
    std::size_t done = 0;
    for (std::size_t part = 1; done < content.size(); part = part * 2 + 1)
        done += decompressor.Read(read.data() + done, std::min(part, read.size() - done));
    EXPECT_TRUE(read.substr(0, done) == content);
    EXPECT_EQ(decompressor.Read(read.data(), 1), 0U);
}

TEST_P(Compressing, SeveralPartsBehindEachOtherAreOneContent)
{
    const auto part = [&](const char* text) { return Compressed(GetParam(), text); };
    EXPECT_EQ(ReadDecompressed(File(part("one ") + part("") + part("two")), 7), "one two");
}

TEST_P(Compressing, APartOfAFileIsReadAlone)
{
    const std::string first = Compressed(GetParam(), "one");
    const std::string second = Compressed(GetParam(), "two");
    const InputFile file = File(first + second);
    Decompressor decompressor(file, GetParam(), first.size(), file.Size(), 3);
    std::string read(9, '\0');
    EXPECT_EQ(decompressor.Read(read.data(), read.size()), 3U);
    EXPECT_EQ(read.substr(0, 3), "two");
}

TEST_P(Compressing, AFileCutOffAnywhereFails)
{
    const std::string bytes = Compressed(GetParam(), Content(2000));
    for (std::size_t size = 4; size < bytes.size(); ++size)
        ASSERT_EQ(Failure(bytes.substr(0, size)), "the compressed data ends unexpectedly") << size;
}

TEST_P(Compressing, MoreContentThanTheLimitIsRefusedBeforeItIsKept)
{
    const std::string bomb = Compressed(GetParam(), std::string(50'000'000, '\0'));
    ASSERT_LT(bomb.size(), 100'000U);
    EXPECT_EQ(Failure(bomb, 49'999'999),
              "the file holds more than 49999999 bytes when it is decompressed");
    EXPECT_EQ(Failure(bomb, 50'000'000), "");
}

TEST_P(Compressing, SomethingElseBehindTheDataFails)
{
    EXPECT_NE(Failure(Compressed(GetParam(), "text") + "more").find("data is damaged: "),
              std::string::npos);
}

INSTANTIATE_TEST_SUITE_P(By, Compressing, ::testing::Values(Compression::Gzip, Compression::Zstd),
                         [](const auto& method) {
                             return method.param == Compression::Gzip ? "Gzip" : "Zstd";
                         });

TEST_F(Gzip, AWrongCheckSumIsReported)
{
    std::string bytes = Compressed(Compression::Gzip, "text");
    bytes[bytes.size() - 8] ^= 1;
    EXPECT_EQ(Failure(bytes), "the gzip data is damaged: incorrect data check");
}

TEST_F(Gzip, DamageIsReportedWithItsReason)
{
    std::string bytes = Compressed(Compression::Gzip, "text");
    bytes[2] = 7;
    EXPECT_EQ(Failure(bytes), "the gzip data is damaged: unknown compression method");
}

TEST_F(Zstd, AWindowLargerThanPermittedIsRefused)
{
    // A frame header that asks for 2 GiB, and an empty block.
    const std::string bytes("\x28\xB5\x2F\xFD\x00\xA8\x01\x00\x00", 9);
    EXPECT_EQ(Failure(bytes), "the zstd data is damaged: Frame requires too much memory for "
                              "decoding");
}

TEST(PlainFiles, AreReadAsTheyAre)
{
    FileTree tree;
    tree.File(u"a"_s, "\x1Fplain");
    const InputFile file(std::filesystem::path(tree.Path(u"a"_s).toStdU16String()));
    EXPECT_EQ(CompressionOf(file), Compression::None);
    EXPECT_EQ(ReadDecompressed(file, 6), "\x1Fplain");
    EXPECT_THROW(ReadDecompressed(file, 5), FormatError);
}

} // namespace Halvern::Test
