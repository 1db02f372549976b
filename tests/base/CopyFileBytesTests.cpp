// SPDX-License-Identifier: Apache-2.0

#include "CopyBytesFixture.h"

namespace Halvern::Test {

TEST_F(CopyBytes, GivesEveryByteOfAFileOfSeveralBuffers)
{
    const QByteArray content = PatternBytes(SeveralBuffers);
    tree.File(u"in/big.prt"_s, content);
    EXPECT_TRUE(Copy(u"in/big.prt"_s, u"out/big.prt"_s)) << error.toStdString();
    EXPECT_TRUE(tree.Read(u"out/big.prt"_s) == content);
    EXPECT_TRUE(tree.Read(u"in/big.prt"_s) == content);
    EXPECT_EQ(Names(), (QStringList{u"a.prt"_s, u"big.prt"_s, u"big.prt"_s}));
}

TEST_F(CopyBytes, CopiesAnEmptyFile)
{
    tree.File(u"in/empty"_s, {});
    EXPECT_TRUE(Copy(u"in/empty"_s, u"out/empty"_s)) << error.toStdString();
    EXPECT_EQ(tree.Read(u"out/empty"_s), QByteArray());
}

TEST_F(CopyBytes, MakesNamesOfAnyLengthAndLetters)
{
    const QString longest = QString(255, u'x');
    EXPECT_TRUE(Copy(u"in/a.prt"_s, u"out/"_s + longest)) << error.toStdString();
    EXPECT_TRUE(Copy(u"in/a.prt"_s, u"out/\u00e4 \u4e2d\U0001f600.prt"_s)) << error.toStdString();
    EXPECT_TRUE(Copy(u"in/a.prt"_s, u"out/%1 XXXXXX"_s)) << error.toStdString();
    EXPECT_EQ(tree.Read(u"out/"_s + longest), "content");
    EXPECT_EQ(tree.Read(u"out/\u00e4 \u4e2d\U0001f600.prt"_s), "content");
    EXPECT_EQ(Names().size(), 4);
}

TEST_F(CopyBytes, NeverOverwritesAFile)
{
    tree.File(u"out/a.prt"_s, "old");
    ExpectRefusal(u"in/a.prt"_s, u"out/a.prt"_s, u"Destination file exists"_s);
    EXPECT_EQ(tree.Read(u"out/a.prt"_s), "old");
}

TEST_F(CopyBytes, WithoutAFileOrAFolderFailsWithAReason)
{
    EXPECT_FALSE(Copy(u"in/gone.prt"_s, u"out/a.prt"_s));
    EXPECT_FALSE(error.isEmpty());
    EXPECT_FALSE(Copy(u"in/a.prt"_s, u"out/gone/a.prt"_s));
    EXPECT_FALSE(error.isEmpty());
    EXPECT_EQ(Names(), QStringList{u"a.prt"_s});
}

TEST_F(CopyBytes, KeepsTheModificationTime)
{
    const QDateTime time = QDateTime::fromSecsSinceEpoch(1'600'000'000);
    tree.Touch(u"in/a.prt"_s, time);
    EXPECT_TRUE(Copy(u"in/a.prt"_s, u"out/a.prt"_s)) << error.toStdString();
    EXPECT_EQ(tree.Modified(u"out/a.prt"_s), time);
}

} // namespace Halvern::Test
