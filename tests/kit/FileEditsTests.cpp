// SPDX-License-Identifier: Apache-2.0

#include "FileTree.h"

#include "pluginkit/FileEdits.h"
#include "pluginkit/FileScanner.h"
#include "pluginkit/FormatError.h"
#include "pluginkit/Utf.h"

#include <gtest/gtest.h>

#include <QtCore/QFile>

namespace Halvern::Test {

using namespace PluginKit;
using namespace Qt::StringLiterals;

namespace {

class FileSpans : public ::testing::Test
{
protected:
    InputFile Open(const QByteArray& content)
    {
        tree.File(m_name, content);
        return InputFile(PathFromUtf8(tree.Path(m_name).toStdString()));
    }
    /// What becomes of the content; nothing may be left beside the file.
    QByteArray Edited(const QByteArray& content, std::vector<FileEdit> edits)
    {
        InputFile file = Open(content);
        ReplaceSpans(file, std::move(edits));
        EXPECT_EQ(tree.Contents().size(), 1);
        return tree.Read(m_name);
    }

    const QString m_name = u"Höhe.obj"_s;
    FileTree tree;
};

} // namespace

TEST_F(FileSpans, EditsAreMadeInWhateverOrderTheyCome)
{
    EXPECT_EQ(Edited("one two three", {{8, 13, "3"}, {0, 3, "first"}}), "first two 3");
}

TEST_F(FileSpans, AnEmptySpanPutsTextIn)
{
    EXPECT_EQ(Edited("ad", {{1, 1, "b"}, {1, 1, "c"}, {2, 2, "e"}, {0, 0, ">"}}), ">abcde");
    EXPECT_EQ(Edited("", {{0, 0, "x"}}), "x");
}

TEST_F(FileSpans, NeighboursAreNoOverlap)
{
    EXPECT_EQ(Edited("abcd", {{1, 2, "B"}, {2, 3, ""}, {3, 4, "DD"}}), "aBDD");
}

TEST_F(FileSpans, WhatStaysIsCopiedByteForByteAcrossBlocks)
{
    const qint64 block = FileScanner::BlockSize;
    const QByteArray content = PatternBytes(3 * block + 17);
    QByteArray expected = content;
    expected.replace(2 * block - 3, 9, "other").replace(0, 1, "longer");
    const auto at = static_cast<std::uint64_t>(2 * block - 3);
    EXPECT_TRUE(Edited(content, {{at, at + 9, "other"}, {0, 1, "longer"}}) == expected);
}

TEST_F(FileSpans, EditsThatOverlapOrLieOutsideAreRefusedAndTheFileStays)
{
    const std::vector<FileEdit> rows[] = {
        {{0, 2, "x"}, {1, 3, "y"}}, {{2, 1, "x"}}, {{3, 5, "x"}}, {{5, 5, "x"}}};
    for (const std::vector<FileEdit>& edits : rows) {
        InputFile file = Open("abcd");
        EXPECT_THROW(ReplaceSpans(file, edits), std::invalid_argument);
        EXPECT_EQ(tree.Contents(), (FileTree::Snapshot{{m_name, "abcd"}}));
    }
}

TEST_F(FileSpans, AFileThatShrankIsNotReplaced)
{
    InputFile file = Open("abcdef");
    ASSERT_TRUE(QFile::resize(tree.Path(m_name), 3));
    EXPECT_THROW(ReplaceSpans(file, {{0, 1, "x"}}), FormatError);
    EXPECT_EQ(tree.Contents(), (FileTree::Snapshot{{m_name, "abc"}}));
}

TEST_F(FileSpans, AScanMeetsEveryByteOnceWithItsPosition)
{
    const QByteArray content = PatternBytes(2 * qint64(FileScanner::BlockSize) + 5);
    const InputFile file = Open(content);
    FileScanner scanner(file);
    QByteArray met;
    while (const std::optional<char> c = scanner.Peek()) {
        ASSERT_EQ(scanner.Position(), static_cast<std::uint64_t>(met.size()));
        ASSERT_EQ(scanner.Next(), c);
        met.append(*c);
    }
    EXPECT_TRUE(met == content);
    EXPECT_TRUE(scanner.AtEnd());
    EXPECT_EQ(scanner.Next(), std::nullopt);
    EXPECT_EQ(scanner.Position(), file.Size());
}

TEST_F(FileSpans, SkippingStopsAtTheNearestOfTheBytesInAnyBlock)
{
    const auto block = static_cast<qsizetype>(FileScanner::BlockSize);
    const InputFile file = Open(QByteArray(block + 3, '.') + ";#" + QByteArray(block, '.') + "#");
    FileScanner scanner(file);
    EXPECT_TRUE(scanner.SkipTo("#;"));
    EXPECT_EQ(scanner.Position(), static_cast<std::uint64_t>(block + 3));
    EXPECT_EQ(scanner.Next(), ';');
    EXPECT_TRUE(scanner.SkipTo("#;"));
    EXPECT_EQ(scanner.Position(), static_cast<std::uint64_t>(block + 4));
    EXPECT_EQ(scanner.Next(), '#');
    EXPECT_TRUE(scanner.SkipTo("#;"));
    EXPECT_EQ(scanner.Position(), static_cast<std::uint64_t>(2 * block + 5));
    EXPECT_EQ(scanner.Next(), '#');
    EXPECT_FALSE(scanner.SkipTo("#;"));
    EXPECT_EQ(scanner.Position(), file.Size());
}

TEST_F(FileSpans, SkippingFindsEachByteWhereverAnotherOneIsNear)
{
    // Distances around those of the pieces that are looked through at once.
    for (const qsizetype distance : {0, 1, 254, 255, 256, 257, 511, 512, 513, 10'000}) {
        const InputFile file = Open(QByteArray(distance, '.') + ";#" + QByteArray(300, '.') + "#");
        for (const std::string_view bytes : {"#;", ";#"}) {
            FileScanner scanner(file);
            EXPECT_TRUE(scanner.SkipTo(bytes));
            EXPECT_EQ(scanner.Position(), static_cast<std::uint64_t>(distance));
        }
        FileScanner scanner(file);
        EXPECT_TRUE(scanner.SkipTo("#"));
        EXPECT_EQ(scanner.Position(), static_cast<std::uint64_t>(distance + 1));
    }
}

TEST_F(FileSpans, AScanFromTheMiddleCountsFromTheBeginning)
{
    const InputFile file = Open("abcdef");
    FileScanner scanner(file, 4);
    EXPECT_EQ(scanner.Next(), 'e');
    EXPECT_EQ(scanner.Position(), 5U);
    EXPECT_TRUE(FileScanner(file, 6).AtEnd());
    EXPECT_TRUE(FileScanner(file, 7).AtEnd());
}

} // namespace Halvern::Test
