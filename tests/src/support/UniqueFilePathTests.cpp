// SPDX-License-Identifier: Apache-2.0

#include "FileTree.h"
#include "support/PathUtilities.h"

#include <QtCore/QDir>
#include <QtCore/QFile>

#include <gtest/gtest.h>

namespace {

using namespace Halvern::FileLink;
using namespace Halvern::Test;
using namespace Qt::StringLiterals;

class UniqueFilePath : public ::testing::Test
{
protected:
    QString Unique(const QString& name, const QString& pattern = u" (%1)"_s,
                   const QString& firstDecoration = {})
    {
        const QString path = MakeUniqueFilePath(tree.Path(name), pattern, firstDecoration);
        return QDir(tree.Path()).relativeFilePath(path);
    }

    FileTree tree;
};

TEST_F(UniqueFilePath, IsThePathItselfWhenNothingIsThere)
{
    EXPECT_EQ(Unique(u"a.prt"_s), u"a.prt"_s);
    const QString unclean = tree.Path() + u"/./a.prt"_s;
    EXPECT_EQ(MakeUniqueFilePath(unclean, u" (%1)"_s), unclean);
    EXPECT_EQ(Unique(u"a.prt"_s, u" (%1)"_s, u"_copy"_s), u"a.prt"_s);
}

TEST_F(UniqueFilePath, OfNothingIsNothing)
{
    EXPECT_EQ(MakeUniqueFilePath(QString(), u" (%1)"_s), QString());
}

TEST_F(UniqueFilePath, CountsFromTwoToTheFirstFreeName)
{
    tree.File(u"t/a.prt"_s);
    EXPECT_EQ(Unique(u"t/a.prt"_s), u"t/a (2).prt"_s);
    tree.File(u"t/a (2).prt"_s);
    EXPECT_EQ(Unique(u"t/a.prt"_s), u"t/a (3).prt"_s);
    tree.File(u"t/a (4).prt"_s);
    EXPECT_EQ(Unique(u"t/a.prt"_s), u"t/a (3).prt"_s);
    EXPECT_EQ(MakeUniqueFilePath(tree.Path(u"t/a.prt"_s), u" (%1)"_s), tree.Path(u"t/a (3).prt"_s));
}

TEST_F(UniqueFilePath, CountsInDecimal)
{
    tree.File(u"a.prt"_s);
    for (int n = 2; n < 12; ++n)
        tree.File(u"a (%1).prt"_s.arg(n));
    EXPECT_EQ(Unique(u"a.prt"_s), u"a (12).prt"_s);
}

TEST_F(UniqueFilePath, OfANameWithoutSuffixHasNone)
{
    tree.File(u"README"_s);
    EXPECT_EQ(Unique(u"README"_s), u"README (2)"_s);
}

TEST_F(UniqueFilePath, KeepsAllButTheLastDotInTheBaseName)
{
    tree.File(u"a.b.prt"_s);
    EXPECT_EQ(Unique(u"a.b.prt"_s), u"a.b (2).prt"_s);
}

TEST_F(UniqueFilePath, OfANameThatIsAllSuffixBeginsWithTheDecoration)
{
    tree.File(u".prt"_s);
    EXPECT_EQ(Unique(u".prt"_s), u" (2).prt"_s);
}

TEST_F(UniqueFilePath, WithoutAPatternAppendsTheNumber)
{
    tree.File(u"a.prt"_s);
    EXPECT_EQ(Unique(u"a.prt"_s, QString()), u"a2.prt"_s);
}

TEST_F(UniqueFilePath, TriesTheFirstDecorationOnceAndThenCounts)
{
    tree.File(u"a.prt"_s);
    EXPECT_EQ(Unique(u"a.prt"_s, u" (%1)"_s, u"_copy"_s), u"a_copy.prt"_s);
    tree.File(u"a_copy.prt"_s);
    EXPECT_EQ(Unique(u"a.prt"_s, u" (%1)"_s, u"_copy"_s), u"a (2).prt"_s);
    tree.File(u"a (2).prt"_s);
    EXPECT_EQ(Unique(u"a.prt"_s, u" (%1)"_s, u"_copy"_s), u"a (3).prt"_s);
}

TEST_F(UniqueFilePath, TakesAFolderForATakenName)
{
    tree.Folder(u"a.prt"_s).Folder(u"a (2).prt"_s);
    EXPECT_EQ(Unique(u"a.prt"_s), u"a (3).prt"_s);
}

TEST_F(UniqueFilePath, CleansThePathOfATakenName)
{
    tree.File(u"t/a.prt"_s);
    EXPECT_EQ(MakeUniqueFilePath(tree.Path() + u"/x/../t/./a.prt"_s, u" (%1)"_s),
              tree.Path(u"t/a (2).prt"_s));
}

TEST_F(UniqueFilePath, IsNotConfusedByPercentSignsInNames)
{
    tree.File(u"a%1%2%3.prt"_s);
    EXPECT_EQ(Unique(u"a%1%2%3.prt"_s), u"a%1%2%3 (2).prt"_s);
}

} // namespace
