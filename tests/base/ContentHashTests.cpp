// SPDX-License-Identifier: Apache-2.0

#include "BaseFiles.h"
#include "FileTree.h"
#include "base/ContentHash.h"

#include <gtest/gtest.h>

namespace Halvern::Test {

using namespace Qt::StringLiterals;

namespace {

class ContentHashes : public ::testing::Test
{
protected:
    Base::ContentHash HashOf(const QByteArray& content)
    {
        tree.File(u"hashed"_s, content);
        Base::ContentHash hash;
        const Base::FileResult result = Base::HashContent(Native(tree.Path(u"hashed"_s)), hash);
        EXPECT_TRUE(result) << result.Text();
        return hash;
    }

    FileTree tree;
};

} // namespace

// What databases hold must be found again by every later version.
TEST_F(ContentHashes, AreWhatTheyHaveAlwaysBeen)
{
    EXPECT_EQ(HashOf("").Hex(), "99aa06d3014798d86001c324468d497f");
    EXPECT_EQ(HashOf("abc").Hex(), "06b05ab6733a618578af5f94892f3950");
    EXPECT_EQ(HashOf(PatternBytes(1'000'003)).Hex(), "82a66f765ce3b0a085dcbbd86af3259c");
}

TEST_F(ContentHashes, TellContentsApartAndNothingElse)
{
    QByteArray content = PatternBytes(3 * 256 * 1024 + 17);
    const Base::ContentHash hash = HashOf(content);
    tree.File(u"again"_s, content).Touch(u"again"_s, QDateTime::fromSecsSinceEpoch(1'500'000'000));
    Base::ContentHash again;
    EXPECT_TRUE(Base::HashContent(Native(tree.Path(u"again"_s)), again));
    EXPECT_EQ(hash, again);
    EXPECT_NE(HashOf(content + 'x'), hash);
    for (const qsizetype at : {qsizetype(0), qsizetype(256 * 1024), content.size() - 1}) {
        content[at] = char(content[at] ^ 1);
        EXPECT_NE(HashOf(content), hash) << at;
        content[at] = char(content[at] ^ 1);
    }
    EXPECT_EQ(HashOf(content), hash);
}

TEST_F(ContentHashes, AreTheSameForBytesInParts)
{
    const QByteArray content = PatternBytes(100'003);
    Base::ContentHasher hasher;
    EXPECT_EQ(hasher.Result(), HashOf(""));
    for (qsizetype at = 0; at < content.size(); at += 1009)
        hasher.Add(content.mid(at, 1009).toStdString());
    EXPECT_EQ(hasher.Result(), HashOf(content));
    EXPECT_EQ(hasher.Result(), HashOf(content)) << "asking changes nothing";
    hasher.Add("x");
    EXPECT_EQ(hasher.Result(), HashOf(content + 'x'));
}

TEST_F(ContentHashes, OfOpenFilesAreThoseOfAllTheirBytes)
{
    const Base::ContentHash expected = HashOf("content");
    Base::Handle handle = Base::NoHandle;
    ASSERT_TRUE(Base::OpenForReading(Native(tree.Path(u"hashed"_s)), handle));
    Base::ContentHash first;
    Base::ContentHash second;
    EXPECT_TRUE(Base::HashContent(handle, first));
    EXPECT_TRUE(Base::HashContent(handle, second));
    Base::Close(handle);
    EXPECT_EQ(first, expected);
    EXPECT_EQ(second, expected);
    EXPECT_FALSE(Base::HashContent(Base::NoHandle, second));
    EXPECT_EQ(second, expected) << "a failure leaves it alone";
}

TEST_F(ContentHashes, OfWhatCannotBeReadAreAFailure)
{
    const Base::ContentHash before = HashOf("content");
    Base::ContentHash hash = before;
    EXPECT_EQ(Base::HashContent(Native(tree.Path(u"none"_s)), hash).Problem(),
              Base::FileProblem::Missing);
    EXPECT_FALSE(Base::HashContent(Native(tree.Path()), hash));
    EXPECT_EQ(hash, before);
}

TEST_F(ContentHashes, AreTextsOfThirtyTwoDigits)
{
    const Base::ContentHash hash = HashOf("content");
    EXPECT_EQ(Base::ContentHash::FromHex(hash.Hex()), hash);
    Base::ContentHash small;
    small.bytes[0] = 0x0f;
    small.bytes[15] = 0xa0;
    EXPECT_EQ(small.Hex(), "0f0000000000000000000000000000a0");
    EXPECT_EQ(Base::ContentHash::FromHex(small.Hex()), small);
    for (const char* text :
         {"", "0", "0f0000000000000000000000000000a", "0f0000000000000000000000000000a00",
          "0F0000000000000000000000000000A0", "0g0000000000000000000000000000a0"})
        EXPECT_FALSE(Base::ContentHash::FromHex(text)) << text;
}

} // namespace Halvern::Test
