// SPDX-License-Identifier: Apache-2.0

// Long work on files, which somebody watches and may stop.

#include "CopyBytesFixture.h"
#include "CountingWatch.h"
#include "base/ContentHash.h"
#include "base/ContentReader.h"

#include <thread>

namespace Halvern::Test {

namespace {

constexpr qint64 Size = 5 * 1024 * 1024 + 17;

class WatchedCopies : public CopyBytes
{
protected:
    WatchedCopies() { tree.File(u"in/big.prt"_s, PatternBytes(Size)); }

    Base::ContentHash hash;
};

} // namespace

TEST_F(WatchedCopies, AreWatchedOnTheirThreadAlone)
{
    CountingWatch watch(0);
    const Base::WorkWatch::Scope watching(watch);
    std::thread([&] { EXPECT_TRUE(Copy(u"in/big.prt"_s, u"out/big.prt"_s)); }).join();
    EXPECT_EQ(watch.asked, 0);
}

TEST_F(WatchedCopies, GiveTheirWatchBackToTheOneBefore)
{
    CountingWatch outer;
    const Base::WorkWatch::Scope watching(outer);
    {
        CountingWatch inner;
        const Base::WorkWatch::Scope watchingInside(inner);
        EXPECT_EQ(Base::WorkWatch::OfThisThread(), &inner);
    }
    EXPECT_EQ(Base::WorkWatch::OfThisThread(), &outer);
}

TEST_F(WatchedCopies, HashesAreStoppedAsWell)
{
    CountingWatch watch(2);
    const Base::WorkWatch::Scope watching(watch);
    EXPECT_EQ(Base::HashContent(Native(tree.Path(u"in/big.prt"_s)), hash).Problem(),
              Base::FileProblem::Stopped);
    EXPECT_EQ(hash, Base::ContentHash());
    EXPECT_EQ(watch.asked, 3);
}

// A disk of some 100 KB per second: pieces of 256 KB would take seconds.
TEST_F(WatchedCopies, AskOftenAlsoOnASlowDisk)
{
    Base::PieceSize pieces(64 * 1024, 256 * 1024);
    std::size_t piece = 0;
    for (int i = 0; i < 6; ++i) {
        piece = pieces.Next();
        std::this_thread::sleep_for(std::chrono::microseconds(piece * 10));
    }
    EXPECT_LE(piece, std::size_t(8) * 1024);
    // The system may take the processor away between two of them.
    for (int i = 0; i < 1000 && piece < std::size_t(256) * 1024; ++i)
        piece = pieces.Next();
    EXPECT_EQ(piece, std::size_t(256) * 1024) << "and it may become fast again";
}

} // namespace Halvern::Test
