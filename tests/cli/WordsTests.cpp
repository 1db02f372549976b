// SPDX-License-Identifier: Apache-2.0

#include "Words.h"

#include <QtCore/QSet>

#include <gtest/gtest.h>

using namespace Halvern::Cli;
using namespace Halvern::Jobs;
using namespace Qt::StringLiterals;

namespace {

/// The names of a kind from its first to its last value: each is there, and none twice.
template <typename Kind>
QSet<QString> NamesOf(Kind first, Kind last)
{
    QSet<QString> names;
    for (int value = int(first); value <= int(last); ++value) {
        const QString name = NameOf(Kind(value));
        EXPECT_FALSE(name.isEmpty()) << value;
        EXPECT_FALSE(names.contains(name)) << name.toStdString();
        names.insert(name);
    }
    return names;
}

} // namespace

TEST(Names, AreThereForEveryKindAndDifferent)
{
    EXPECT_TRUE(NamesOf(Outcome::Copied, Outcome::NotDone).contains(u"not-done"_s));
    EXPECT_TRUE(
        NamesOf(ConflictKind::TargetTaken, ConflictKind::BothChanged).contains(u"both-changed"_s));
    EXPECT_TRUE(NamesOf(ConflictAnswer::Stop, ConflictAnswer::Rename).contains(u"keep"_s));
    EXPECT_TRUE(
        NamesOf(FindingKind::NoSpace, FindingKind::FolderNotWritable).contains(u"no-space"_s));
    EXPECT_TRUE(
        NamesOf(Remark::OnlyLinksWanted, Remark::StillLinked).contains(u"rewrite-pending"_s));
}

TEST(Words, ExplainEveryRemarkInASentenceOfItsOwn)
{
    EXPECT_EQ(TextOf(Remark::None, {}), QString());
    QSet<QString> sentences;
    for (int value = int(Remark::OnlyLinksWanted); value <= int(Remark::StillLinked); ++value)
        sentences.insert(TextOf(Remark(value), {}));
    EXPECT_EQ(sentences.size(), int(Remark::StillLinked));
    EXPECT_FALSE(sentences.contains(QString()));
}

TEST(Words, TellTheDetailOfARemark)
{
    EXPECT_EQ(TextOf(Remark::Excluded, u"*.FCStd1"_s), u"excluded by the pattern *.FCStd1"_s);
    EXPECT_EQ(TextOf(Remark::NotReadable, u"Permission denied"_s),
              u"it could not be read: Permission denied"_s);
    EXPECT_EQ(TextOf(Remark::None, u"said elsewhere"_s), u"said elsewhere"_s);
}

TEST(Words, OfAProblemAreFollowedByWhatItMeansForLater)
{
    FileResult result;
    result.outcome = Outcome::Copied;
    result.problems.append({{}, {}, {}, u"no such node"_s, u"p.so"_s});
    EXPECT_EQ(ReasonOf(result), u"no such node"_s);
    result.remark = Remark::LinksNotRead;
    EXPECT_EQ(ReasonOf(result), u"no such node"_s);
    result.remark = Remark::RewritePending;
    EXPECT_TRUE(ReasonOf(result).startsWith(u"no such node; its links are still to be rewritten"_s))
        << ReasonOf(result).toStdString();
}
