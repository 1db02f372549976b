// SPDX-License-Identifier: Apache-2.0

#include "ExcludeRules.h"
#include "FileTree.h"

#include <QtCore/QElapsedTimer>

#include <gtest/gtest.h>

namespace Halvern::Test {

using namespace Jobs;
using namespace Qt::StringLiterals;

namespace {

struct PatternRow
{
    const char* name;
    /// Of a file with patterns.
    const char* content;
    /// With a slash at its end for a folder.
    const char* path;
    /// That of the pattern which excludes the path or a folder above it; 0 when none does.
    int line;
};

void PrintTo(const PatternRow& row, std::ostream* out)
{
    *out << row.name;
}

/// The answers are those of git 2.39 (check-ignore) for the same .gitignore file and path.
const PatternRow rows[] = {
    {"a name at the top", "a.prt\n", "a.prt", 1},
    {"a name below", "a.prt\n", "x/y/a.prt", 1},
    {"another name", "a.prt\n", "aa.prt", 0},
    {"letter case", "A.prt\n", "a.prt", 0},
    {"a comment", "#a\n", "#a", 0},
    {"an escaped comment mark", "\\#a\n", "#a", 1},
    {"a blank line", "\n\n", "a", 0},
    {"spaces at the end", "a   \n", "a", 1},
    {"spaces at the end are no name", "a   \n", "a   ", 0},
    {"an escaped space at the end", "a\\ \n", "a ", 1},
    {"an escaped space before others", "a\\   \n", "a ", 1},
    {"a tab at the end counts", "a\t\n", "a", 0},
    {"a space at the beginning counts", " a\n", "a", 0},
    {"a line break of Windows", "a\r\nb\r\n", "a", 1},
    {"the last line without a line break", "b\na", "a", 2},
    {"a byte order mark", "\uFEFFa\n", "a", 1},
    {"a negation after it", "*.bak\n!keep.bak\n", "keep.bak", 0},
    {"a negation before it", "!keep.bak\n*.bak\n", "keep.bak", 2},
    {"an escaped exclamation mark", "\\!a\n", "!a", 1},
    {"a negation of nothing", "!\n", "a", 0},
    {"a file in an excluded folder cannot be brought back", "lib/\n!lib/a\n", "lib/a", 1},
    {"what lies in a folder can be brought back", "lib/*\n!lib/a\n", "lib/a", 0},
    {"the rest of it stays out", "lib/*\n!lib/a\n", "lib/b", 1},
    {"a whitelist", "*\n!*/\n!*.stp\n", "x/y/a.stp", 0},
    {"what is not on it", "*\n!*/\n!*.stp\n", "x/y/a.prt", 1},
    {"a slash at the beginning", "/a\n", "a", 1},
    {"a slash at the beginning not below", "/a\n", "x/a", 0},
    {"a slash inside", "x/a\n", "x/a", 1},
    {"a slash inside not below", "x/a\n", "y/x/a", 0},
    {"a slash at the end and a folder", "a/\n", "x/a/", 1},
    {"a slash at the end and a file", "a/\n", "x/a", 0},
    {"a slash at the end and what lies there", "a/\n", "x/a/b", 1},
    {"slashes at both ends", "/a/\n", "x/a/", 0},
    {"two slashes at the end", "a//\n", "a/", 0},
    {"two slashes inside", "a//b\n", "a/b", 0},
    {"only a slash", "/\n", "a/", 0},
    {"a star", "*.prt\n", "x/a.prt", 1},
    {"a star stands for nothing, too", "a*.prt\n", "a.prt", 1},
    {"a star stops at a slash", "x/*.prt\n", "x/y/a.prt", 0},
    {"a star and a dot at the beginning", "*\n", ".a", 1},
    {"a star as a folder", "*/a\n", "x/a", 1},
    {"a star is one folder", "*/a\n", "x/y/a", 0},
    {"a star is not no folder", "*/a\n", "a", 0},
    {"stars to go back to", "a*b*c\n", "aXbXbXc", 1},
    {"stars that end too early", "a*b*c\n", "aXbXcX", 0},
    {"an escaped star", "\\*\n", "a", 0},
    {"an escaped star and a star", "\\*\n", "*", 1},
    {"a question mark", "a?c\n", "abc", 1},
    {"a question mark is not nothing", "a?c\n", "ac", 0},
    {"a question mark stops at a slash", "x?a\n", "x/a", 0},
    {"a set", "[abc].prt\n", "b.prt", 1},
    {"a set without it", "[abc].prt\n", "d.prt", 0},
    {"a range", "[a-c].prt\n", "b.prt", 1},
    {"a range without it", "[a-c].prt\n", "d.prt", 0},
    {"a negated set", "[!a-c].prt\n", "d.prt", 1},
    {"a negated set without it", "[!a-c].prt\n", "b.prt", 0},
    {"a set negated the other way", "[^a-c].prt\n", "d.prt", 1},
    {"a bracket in a set", "[]a]\n", "]", 1},
    {"a bracket in a negated set", "[!]a]\n", "]", 0},
    {"a minus at the end of a set", "[a-]\n", "-", 1},
    {"a minus at the beginning of a set", "[-a]\n", "-", 1},
    {"a minus after a range", "[a-c-e]\n", "d", 0},
    {"a minus after a range is itself", "[a-c-e]\n", "-", 1},
    {"an escaped bracket in a set", "[\\]]\n", "]", 1},
    {"an escaped end of a range", "[a-\\c]\n", "b", 1},
    {"a range the wrong way round", "[c-a]\n", "b", 0},
    {"a named set", "a[[:digit:]]\n", "a7", 1},
    {"a named set without it", "a[[:digit:]]\n", "ax", 0},
    {"a named set among others", "a[x[:upper:]_]\n", "aB", 1},
    {"a set of no such name", "a[[:foo:]]\n", "af]", 0},
    {"a bracket and a colon in a set", "a[[:]\n", "a:", 1},
    {"a set with a slash", "x[/]a\n", "x/a", 0},
    {"a negated set and a slash", "x[!q]a\n", "x/a", 0},
    {"a set with a slash, and something else", "x[/b]a\n", "xba", 1},
    {"an open bracket", "a[b\n", "a[b", 0},
    {"an open bracket matches nothing", "[a\n", "a", 0},
    {"an escaped bracket", "\\[a]\n", "[a]", 1},
    {"a backslash at the end", "a\\\n", "a\\", 0},
    {"a backslash at the end and the name", "a\\\n", "a", 0},
    {"an escaped backslash", "a\\\\b\n", "a\\b", 1},
    {"an escaped letter", "\\a\n", "a", 1},
    {"an escaped slash", "x\\/a\n", "x/a", 1},
    {"folders and a name", "**/a\n", "x/y/a", 1},
    {"no folder and a name", "**/a\n", "a", 1},
    {"folders and a path", "**/x/a\n", "q/x/a", 1},
    {"all of a folder", "x/**\n", "x/y/a", 1},
    {"all of a folder is not the folder", "x/**\n", "x/", 0},
    {"folders between", "x/**/a\n", "x/p/q/a", 1},
    {"no folder between", "x/**/a\n", "x/a", 1},
    {"folders between and another name", "x/**/a\n", "x/p/b", 0},
    {"folders between twice", "x/**/y/**/a\n", "x/1/y/2/y/3/a", 1},
    {"two stars alone", "**\n", "x/a", 1},
    {"two stars and a slash", "**/\n", "x/", 1},
    {"two stars and a slash and a file", "**/\n", "a", 0},
    {"a slash and two stars", "/**\n", "a", 1},
    {"three stars are two", "x/***/a\n", "x/p/q/a", 1},
    {"two stars in a name", "x/a**b\n", "x/aXb", 1},
    {"two stars in a name stop at a slash", "x/a**b\n", "x/aX/Xb", 0},
    {"two stars at the end of a name", "x/a**\n", "x/ab", 1},
    {"folders between folders", "x/**/**/a\n", "x/a", 1},
    {"folders, for folders only", "x/**/\n", "x/y/", 1},
    {"folders, for folders only, and a file", "x/**/\n", "x/y", 0},
    {"letters beyond ASCII", "H\u00f6he*\n", "H\u00f6he 1", 1},
};

/// What excludes a path, or a folder that it lies in.
QString Answer(const ExcludeRules& rules, QString path)
{
    const bool isFolder = path.endsWith(u'/');
    path.chop(isFolder ? 1 : 0);
    for (qsizetype slash = path.indexOf(u'/'); slash >= 0; slash = path.indexOf(u'/', slash + 1))
        if (const auto match = rules.Match(path.first(slash), true))
            return match->Text();
    const auto match = rules.Match(path, isFolder);
    return match ? match->Text() : QString();
}

ExcludeRules RulesOf(const QByteArray& content)
{
    ExcludeRules rules({}, Base::System::Posix);
    EXPECT_TRUE(rules.AddFile({}, u"F"_s, content));
    return rules;
}

class ExcludePatterns : public ::testing::TestWithParam<PatternRow>
{};

} // namespace

TEST_P(ExcludePatterns, MeanWhatTheyMeanToGit)
{
    const PatternRow& row = GetParam();
    const QString answer = Answer(RulesOf(row.content), QString::fromUtf8(row.path));
    if (row.line == 0)
        EXPECT_EQ(answer, QString());
    else
        EXPECT_TRUE(answer.endsWith(u" (F:%1)"_s.arg(row.line))) << answer.toStdString();
}

INSTANTIATE_TEST_SUITE_P(All, ExcludePatterns, ::testing::ValuesIn(rows));

TEST(ExcludeRules, SayWhichPatternItIsAndWhereItStands)
{
    ExcludeRules rules({u"*.tmp"_s});
    ASSERT_TRUE(rules.AddFile({}, u"/w/.corsyncignore"_s, "# old\n\n*.old   \n"));
    ASSERT_TRUE(rules.AddFile(u"a"_s, u"/w/a/.corsyncignore"_s, "/x\n"));
    EXPECT_EQ(rules.Match(u"a/b.tmp"_s, false)->Text(), u"*.tmp"_s);
    EXPECT_EQ(rules.Match(u"a/b.old"_s, false)->Text(), u"*.old (/w/.corsyncignore:3)"_s);
    EXPECT_EQ(rules.Match(u"a/x"_s, false)->Text(), u"/x (/w/a/.corsyncignore:1)"_s);
    EXPECT_EQ(rules.Match(u"a/b.FCBak"_s, false)->Text(), u"*.FCBak (built in)"_s);
    EXPECT_FALSE(rules.Match(u"a/b.old2"_s, false));
}

TEST(ExcludeRules, OfTheImportGoBeforeThoseOfFilesAndTheDeepestFileGoesFirst)
{
    ExcludeRules rules({u"!own"_s});
    ASSERT_TRUE(rules.AddFile({}, u"1"_s, "own\ndeep\n/top\n"));
    ASSERT_TRUE(rules.AddFile(u"a/b"_s, u"2"_s, "!deep\nown*\n/top\n"));
    EXPECT_FALSE(rules.Match(u"a/b/own"_s, false));
    EXPECT_FALSE(rules.Match(u"a/b/c/deep"_s, false));
    EXPECT_EQ(rules.Match(u"top"_s, false)->place, u"1:3"_s);
    EXPECT_EQ(rules.Match(u"a/b/top"_s, false)->place, u"2:3"_s);
    EXPECT_FALSE(rules.Match(u"a/b/c/top"_s, false)) << "relative to its folder";
    EXPECT_FALSE(rules.Match(u"a/bb/own2"_s, false)) << "for what lies in its folder";
}

TEST(ExcludeRules, OfFilesAreForgotten)
{
    ExcludeRules rules;
    ASSERT_TRUE(rules.AddFile({}, u"1"_s, "x\n"));
    ASSERT_TRUE(rules.AddFile(u"a"_s, u"2"_s, "y\n"));
    ASSERT_EQ(rules.FileCount(), 2U);
    rules.KeepFiles(1);
    EXPECT_TRUE(rules.Match(u"a/x"_s, false));
    EXPECT_FALSE(rules.Match(u"a/y"_s, false));
    rules.KeepFiles(0);
    EXPECT_FALSE(rules.Match(u"a/x"_s, false));
}

TEST(ExcludeRules, AreNoneInAFileThatIsNoUtf8)
{
    ExcludeRules rules;
    EXPECT_FALSE(rules.AddFile({}, u"F"_s, "a\nb\xFF\n"));
    EXPECT_EQ(rules.FileCount(), 0U);
    EXPECT_FALSE(rules.Match(u"a"_s, false));
}

TEST(ExcludeRules, OfAFileAreAtFaultWhereALineCanMatchNothing)
{
    EXPECT_EQ(ExcludeRules::FaultIn("# [a\n\n*.bak\r\n[a]\n**/\n..a\n"), QString());
    EXPECT_EQ(ExcludeRules::FaultIn("a\xFF\n"), u"no UTF-8"_s);
    for (const QByteArray pattern :
         {"[a", "!", "/", "!/", "a//b", "a\\", "./a", "a/..", "[[:x:]]", "[z-a]", "a/x[9-0Z-A]"})
        EXPECT_EQ(
            ExcludeRules::FaultIn("a\n\n" + pattern + "\r\nb\n"),
            u"line 3: the pattern \"%1\" can match nothing"_s.arg(QString::fromUtf8(pattern)));
}

TEST(ExcludeRules, OfTheImportAreNoLinesOfAFile)
{
    const ExcludeRules rules({u"#recycle"_s, QString()});
    EXPECT_TRUE(rules.Match(u"#recycle"_s, true));
    EXPECT_FALSE(rules.Match(u"recycle"_s, true));
}

TEST(ExcludeRules, OfTheImportEndBeforeTheirTrailingSpacesAsThoseOfAFile)
{
    const ExcludeRules rules({u"a  "_s, u"b\\ "_s, u"c/ "_s});
    EXPECT_TRUE(rules.Match(u"a"_s, false));
    EXPECT_FALSE(rules.Match(u"a  "_s, false));
    EXPECT_TRUE(rules.Match(u"b "_s, false));
    EXPECT_FALSE(rules.Match(u"b"_s, false));
    EXPECT_TRUE(rules.Match(u"c"_s, true));
    EXPECT_FALSE(ExcludePattern(u"  "_s).CanMatch());
}

TEST(ExcludeRules, MayHoldRangesThatAreEmptyBesideOthers)
{
    const ExcludeRules rules({u"[xz-a]"_s, u"y[!z-a]"_s});
    EXPECT_TRUE(rules.Match(u"x"_s, false));
    EXPECT_FALSE(rules.Match(u"m"_s, false));
    EXPECT_TRUE(rules.Match(u"ym"_s, false));
}

TEST(ExcludeRules, KeepOutWhatToolsLeaveBesideDesignFiles)
{
    const ExcludeRules rules;
    for (const QString& path : {u".git/"_s,
                                u"a/.git"_s,
                                u".hg/"_s,
                                u".svn/"_s,
                                u"a/.bzr/"_s,
                                u"a/part.FCStd1"_s,
                                u"part.FCStd12"_s,
                                u"part.20240131-120000.FCBak"_s,
                                u"scene.blend1"_s,
                                u"scene.blend32"_s,
                                u"scene.blend@"_s,
                                u"board-backups/"_s,
                                u"board.kicad_pcb-bak"_s,
                                u"_autosave-board.kicad_pcb"_s,
                                u"~board.kicad_pcb.lck"_s,
                                u"plan.dwl"_s,
                                u"plan.dwl2"_s,
                                u"~$bracket.sldprt"_s,
                                u".~lock.parts.ods#"_s,
                                u"notes.txt~"_s,
                                u".#notes.txt"_s,
                                u".notes.txt.swp"_s,
                                u"a/.DS_Store"_s,
                                u"Thumbs.db"_s,
                                u"a/.corsyncignore"_s})
        EXPECT_FALSE(Answer(rules, path).isEmpty()) << path.toStdString();
}

TEST(ExcludeRules, LetDesignFilesPass)
{
    const ExcludeRules rules;
    for (const QString& path :
         {u"part.FCStd"_s, u"scene.blend"_s, u"board.kicad_pcb"_s, u"board.kicad_prl"_s,
          u"board-backups"_s, u"plan.dwg"_s, u"plan.bak"_s, u".gitignore"_s, u".gitattributes"_s,
          u"git/"_s, u"a.git"_s, u"autosave.kicad_pcb"_s, u"~a.lst"_s, u".hidden"_s, u"$a"_s,
          u"a.lck"_s, u"part.FCStd123"_s, u"part.stp.1"_s, u"CVS/"_s})
        EXPECT_EQ(Answer(rules, path), QString()) << path.toStdString();
}

TEST(ExcludeRules, ThatAreBuiltInGiveWayToWhoNamesWhatTheyKeepOut)
{
    ExcludeRules rules({u"!*.FCStd1"_s, u"!.git"_s});
    ASSERT_TRUE(rules.AddFile({}, u"F"_s, "!*.blend[1-3]\n"));
    EXPECT_FALSE(rules.Match(u"a/part.FCStd1"_s, false));
    EXPECT_TRUE(rules.Match(u"a/part.FCStd2"_s, false));
    EXPECT_FALSE(rules.Match(u".git"_s, true));
    EXPECT_FALSE(rules.Match(u"scene.blend2"_s, false));
    EXPECT_TRUE(rules.Match(u"scene.blend4"_s, false));
}

TEST(ExcludeRules, ThatAreBuiltInStayWhenEverythingIsBroughtBack)
{
    for (const QString& all : {u"!*"_s, u"!*/"_s, u"!**"_s, u"!/**"_s, u"!lib/**"_s, u"!?*"_s}) {
        const ExcludeRules rules({u"*.x"_s, all});
        EXPECT_EQ(Answer(rules, u"lib/.git/"_s), u".git (built in)"_s) << all.toStdString();
    }
    EXPECT_FALSE(ExcludeRules({u"*.x"_s, u"!*"_s}).Match(u"a.x"_s, false));
}

TEST(ExcludeRules, KnowLetterCaseWhereTheDiskDoes)
{
    const QStringList patterns{u"*.TMP"_s, u"H\u00d6HE"_s, u"[a-c]1"_s, u"[!x]2"_s, u"[A-C]3"_s};
    const ExcludeRules posix(patterns, Base::System::Posix);
    const ExcludeRules windows(patterns, Base::System::Windows);
    for (const QString& name :
         {u"a.tmp"_s, u"h\u00f6he"_s, u"B1"_s, u"b3"_s, u"Part.fcstd1"_s, u".GIT"_s}) {
        EXPECT_FALSE(posix.Match(name, true)) << name.toStdString();
        EXPECT_TRUE(windows.Match(name, true)) << name.toStdString();
    }
    EXPECT_TRUE(posix.Match(u"X2"_s, false));
    EXPECT_FALSE(windows.Match(u"X2"_s, false));
    EXPECT_FALSE(posix.IsRulesFile(u".CorsyncIgnore"_s));
    EXPECT_TRUE(windows.IsRulesFile(u".CorsyncIgnore"_s));
}

TEST(ExcludeRules, CountCharactersAndNotBytes)
{
    const ExcludeRules rules({u"?"_s, u"x[\u00e4-\u00fc\U0001f332]"_s});
    EXPECT_TRUE(rules.Match(u"\u00e4"_s, false));
    EXPECT_TRUE(rules.Match(u"\U0001f332"_s, false));
    EXPECT_TRUE(rules.Match(u"x\u00f6"_s, false));
    EXPECT_TRUE(rules.Match(u"x\U0001f332"_s, false));
    EXPECT_FALSE(rules.Match(u"x\U0001f333"_s, false));
}

TEST(ExcludeRules, TakeNoLongerForPatternsThatTryMuch)
{
    const QString name = QString(200, u'a');
    const QString path = QStringList(60, name).join(u'/');
    QElapsedTimer timer;
    timer.start();
    EXPECT_FALSE(ExcludeRules({u"a*"_s.repeated(60) + u'b'}).Match(path, false));
    EXPECT_FALSE(ExcludeRules({u"**/a*/"_s.repeated(30) + u"b"_s}).Match(path, false));
    EXPECT_FALSE(ExcludeRules({(u"**/"_s + u"*a"_s.repeated(20) + u"b/"_s).repeated(20) + u"c"_s})
                     .Match(path, false));
    EXPECT_TRUE(ExcludeRules({u"*?"_s.repeated(100)}).Match(path, false));
    EXPECT_LT(timer.elapsed(), 5000) << "with one try after another it would be longer than life";
}

} // namespace Halvern::Test
