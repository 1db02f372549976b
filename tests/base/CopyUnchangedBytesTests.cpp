// SPDX-License-Identifier: Apache-2.0

#include "CopyBytesFixture.h"
#include "base/ContentHash.h"
#include "base/FileStatus.h"

namespace Halvern::Test {

namespace {

class CopyUnchanged : public CopyBytes
{
protected:
    Base::FileResult CopyStill(const QString& source, const QString& target,
                               Base::ContentHash* hash = nullptr)
    {
        return Base::CopyUnchangedBytes(Native(tree.Path(source)), Native(tree.Path(target)),
                                        copied, hash);
    }

    Base::FileStatus copied;
};

} // namespace

TEST_F(CopyUnchanged, GivesTheSameCopyAndWhatTheSourceWas)
{
    const QByteArray content = PatternBytes(SeveralBuffers);
    const QDateTime time = QDateTime::fromSecsSinceEpoch(1'600'000'000);
    tree.File(u"in/big.prt"_s, content).Touch(u"in/big.prt"_s, time);
    const Base::FileResult result = CopyStill(u"in/big.prt"_s, u"out/big.prt"_s);
    EXPECT_TRUE(result) << result.Text();
    EXPECT_TRUE(tree.Read(u"out/big.prt"_s) == content);
    EXPECT_EQ(tree.Modified(u"out/big.prt"_s), time);
    EXPECT_EQ(copied, Base::ReadFileStatus(Native(tree.Path(u"in/big.prt"_s))));
    EXPECT_EQ(copied.modified, 1'600'000'000'000'000'000);
    EXPECT_EQ(Names(), (QStringList{u"a.prt"_s, u"big.prt"_s, u"big.prt"_s}));
}

TEST_F(CopyUnchanged, GivesTheHashOfTheBytesWhereThatIsWanted)
{
    for (const QByteArray& content : {QByteArray(), PatternBytes(SeveralBuffers, 2)}) {
        tree.File(u"in/big.prt"_s, content);
        Base::ContentHash hash;
        hash.bytes[3] = 17;
        const Base::FileResult result = CopyStill(u"in/big.prt"_s, u"out/big.prt"_s, &hash);
        EXPECT_TRUE(result) << result.Text();
        EXPECT_TRUE(tree.Read(u"out/big.prt"_s) == content);
        Base::ContentHash expected;
        EXPECT_TRUE(Base::HashContent(Native(tree.Path(u"out/big.prt"_s)), expected));
        EXPECT_EQ(hash, expected);
        tree.Remove(u"out/big.prt"_s);
    }
}

TEST_F(CopyUnchanged, NeverOverwritesAndSaysSo)
{
    tree.File(u"out/a.prt"_s, "old");
    Base::ContentHash hash;
    const Base::FileResult result = CopyStill(u"in/a.prt"_s, u"out/a.prt"_s, &hash);
    EXPECT_EQ(result.Problem(), Base::FileProblem::NameTaken);
    EXPECT_EQ(result.Text(), "Destination file exists");
    EXPECT_EQ(tree.Read(u"out/a.prt"_s), "old");
    EXPECT_EQ(copied, Base::FileStatus());
    EXPECT_EQ(hash, Base::ContentHash());
}

TEST_F(CopyUnchanged, FailsWithoutAFileOrAFolder)
{
    EXPECT_FALSE(CopyStill(u"in/gone.prt"_s, u"out/a.prt"_s));
    EXPECT_FALSE(CopyStill(u"in"_s, u"out/a.prt"_s));
    EXPECT_FALSE(CopyStill(u"in/a.prt"_s, u"out/gone/a.prt"_s));
    EXPECT_EQ(copied, Base::FileStatus());
    EXPECT_EQ(Names(), QStringList{u"a.prt"_s});
}

} // namespace Halvern::Test
