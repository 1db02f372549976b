// SPDX-License-Identifier: Apache-2.0

// Copies that somebody watches and may stop. On Windows the system makes the pieces and tells of
// them, which Wine does not.

#include "CopyBytesFixture.h"
#include "CountingWatch.h"
#include "base/ContentHash.h"

#include <algorithm>

namespace Halvern::Test {

namespace {

constexpr qint64 Size = 5 * 1024 * 1024 + 17;

class StoppedCopies : public CopyBytes
{
protected:
    StoppedCopies() { tree.File(u"in/big.prt"_s, PatternBytes(Size)); }

    Base::FileResult CopyUnchanged(Base::ContentHash* result)
    {
        return Base::CopyUnchangedBytes(Native(tree.Path(u"in/big.prt"_s)),
                                        Native(tree.Path(u"out/big.prt"_s)), copied, result);
    }
    void ExpectNothing()
    {
        EXPECT_EQ(Names(), (QStringList{u"a.prt"_s, u"big.prt"_s}));
        EXPECT_EQ(copied, Base::FileStatus());
        EXPECT_EQ(hash, Base::ContentHash());
    }

    Base::FileStatus copied;
    Base::ContentHash hash;
};

} // namespace

TEST_F(StoppedCopies, TellHowFarTheyAreUntilAllIsCopied)
{
    CountingWatch watch;
    {
        const Base::WorkWatch::Scope watching(watch);
        ASSERT_TRUE(CopyUnchanged(&hash));
    }
    ASSERT_FALSE(watch.copied.empty());
    EXPECT_TRUE(std::is_sorted(watch.copied.begin(), watch.copied.end()));
    EXPECT_EQ(watch.copied.back(), std::uint64_t(Size));
    EXPECT_TRUE(tree.Read(u"out/big.prt"_s) == PatternBytes(Size));
    EXPECT_EQ(Base::WorkWatch::OfThisThread(), nullptr);
}

TEST_F(StoppedCopies, EndWhenTheyAreStoppedAndLeaveNothing)
{
    for (const bool isHashed : {true, false})
        for (const int pieces : {0, 1, 3}) {
            CountingWatch watch(pieces);
            const Base::WorkWatch::Scope watching(watch);
            EXPECT_EQ(CopyUnchanged(isHashed ? &hash : nullptr).Problem(),
                      Base::FileProblem::Stopped);
            EXPECT_EQ(watch.asked, pieces + 1) << "once it said no it is not asked again";
            ExpectNothing();
        }
}

TEST_F(StoppedCopies, OfTheModuleTellNobodyAndEndAsWell)
{
    CountingWatch watch(0);
    const Base::WorkWatch::Scope watching(watch);
    EXPECT_FALSE(Copy(u"in/big.prt"_s, u"out/big.prt"_s));
    EXPECT_TRUE(watch.copied.empty());
    ExpectNothing();
}

} // namespace Halvern::Test
