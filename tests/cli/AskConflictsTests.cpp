// SPDX-License-Identifier: Apache-2.0

#include "AskConflicts.h"

#include <QtCore/QDir>

#include <gtest/gtest.h>

using namespace Halvern::Cli;
using namespace Halvern::Jobs;
using namespace Qt::StringLiterals;

namespace {

const ReportFolders Folders{u"/home/x"_s, u"/home/x/Corsync"_s};

Conflict ConflictOf(const QString& name, ConflictKind kind = ConflictKind::BothChanged)
{
    Conflict conflict{
        kind, u"/home/x/project/"_s + name, u"/home/x/Corsync/Demo/"_s + name, {}, true};
    const QDateTime noon(QDate(2026, 3, 1), QTime(12, 0, 0));
    conflict.sourceSide = {1234, noon, noon.addDays(-1), 1200};
    conflict.targetSide = {7, noon.addSecs(3600), {}, 0};
    return conflict;
}

/// Somebody who types these lines and then ends the input.
class Typist
{
public:
    explicit Typist(const QStringList& lines) : m_lines(lines) {}

    std::optional<ConflictAnswers> Answer(const QList<Conflict>& conflicts,
                                          const ConflictAnswers& answered = {})
    {
        const Person person{[this](const QString& text) { m_seen += text; },
                            [this] {
                                return m_lines.isEmpty() ? std::nullopt
                                                         : std::optional(m_lines.takeFirst());
                            }};
        return AskConflicts(conflicts, answered, Folders, person);
    }

    const QString& Seen() const { return m_seen; }
    qsizetype Questions() const { return m_seen.count(u"[k]eep"_s); }

private:
    QStringList m_lines;
    QString m_seen;
};

const QList<Conflict> Three{ConflictOf(u"a"_s), ConflictOf(u"b"_s, ConflictKind::TargetTaken),
                            ConflictOf(u"c"_s)};

} // namespace

TEST(AskingAboutConflicts, ShowsBothFilesThenAndNow)
{
    Typist typist({u"k"_s});
    typist.Answer({ConflictOf(u"a\x1b.prt"_s)});
    const QStringList lines = typist.Seen().split(u'\n');
    ASSERT_EQ(lines.size(), 4) << typist.Seen().toStdString();
    EXPECT_EQ(lines[0], QDir::toNativeSeparators(u"conflict   project/a"_s) + u"\\x1b.prt -> "_s +
                            QDir::toNativeSeparators(u"Demo/a"_s) +
                            u"\\x1b.prt: both changed since the copy was made"_s);
    EXPECT_EQ(lines[1], u"  source  1234 bytes, 2026-03-01 12:00:00 (when it was copied: 1200 "
                        "bytes, 2026-02-28 12:00:00)"_s);
    EXPECT_EQ(lines[2],
              u"  copy    7 bytes, 2026-03-01 13:00:00 (when it was copied: not recorded)"_s);
    EXPECT_TRUE(
        lines[3].startsWith(u"[k]eep the copy, [r]eplace it, re[n]ame the new one, [s]top?"_s));
}

TEST(AskingAboutConflicts, TakesLettersAndWords)
{
    Typist typist({u"keep"_s, u" r "_s, u"n"_s});
    const auto answers = typist.Answer(Three);
    ASSERT_TRUE(answers);
    EXPECT_EQ(*answers, (ConflictAnswers{{Three[0].source, ConflictAnswer::Keep},
                                         {Three[1].source, ConflictAnswer::Replace},
                                         {Three[2].source, ConflictAnswer::Rename}}));
    EXPECT_EQ(typist.Questions(), 3);
}

TEST(AskingAboutConflicts, TakesACapitalLetterOrAllForTheRest)
{
    for (const QString& all : {u"R"_s, u"r all"_s, u"replace ALL"_s}) {
        Typist typist({u"k"_s, all});
        const auto answers = typist.Answer(Three);
        ASSERT_TRUE(answers) << all.toStdString();
        EXPECT_EQ(*answers, (ConflictAnswers{{Three[0].source, ConflictAnswer::Keep},
                                             {Three[1].source, ConflictAnswer::Replace},
                                             {Three[2].source, ConflictAnswer::Replace}}));
        EXPECT_EQ(typist.Questions(), 2);
    }
}

TEST(AskingAboutConflicts, AsksAgainUntilItUnderstands)
{
    Typist typist({QString(), u"yes"_s, u"k all of them"_s, u"Keep it"_s, u"all"_s, u"n"_s});
    const auto answers = typist.Answer({ConflictOf(u"a"_s)});
    ASSERT_TRUE(answers);
    EXPECT_EQ(answers->value(u"/home/x/project/a"_s), ConflictAnswer::Rename);
    EXPECT_EQ(typist.Questions(), 6);
}

TEST(AskingAboutConflicts, StopsWhenToldToAndAtTheEndOfTheInput)
{
    EXPECT_FALSE(Typist({u"k"_s, u"s"_s}).Answer(Three));
    EXPECT_FALSE(Typist({u"S"_s}).Answer(Three));
    EXPECT_FALSE(Typist({u"k"_s}).Answer(Three));
}

TEST(AskingAboutConflicts, PassesOverWhatNobodyCanSettleAndWhatIsAnswered)
{
    QList<Conflict> conflicts;
    for (const ConflictKind kind : {ConflictKind::CannotRename, ConflictKind::FolderInTheWay,
                                    ConflictKind::FileInTheWay, ConflictKind::SameTarget})
        conflicts.append(ConflictOf(u"x"_s, kind));
    conflicts.append(Three[0]);
    Typist typist({u"k"_s});
    const auto answers = typist.Answer(conflicts, {{Three[0].source, ConflictAnswer::Rename}});
    ASSERT_TRUE(answers);
    EXPECT_TRUE(answers->isEmpty());
    EXPECT_EQ(typist.Questions(), 0);
}
