// SPDX-License-Identifier: Apache-2.0

#include "Report.h"

#include "FileTree.h"

#include <QtCore/QDir>
#include <QtCore/QJsonArray>

#include <gtest/gtest.h>

using namespace Halvern::Cli;
using namespace Halvern::Jobs;
using namespace Qt::StringLiterals;
using Halvern::FileLink::Problem;
using Halvern::FileLink::ProblemKind;
using Halvern::FileLink::Stage;

namespace {

const ReportFolders Folders{u"/home/x"_s, u"/home/x/Corsync"_s};

/// An expected line as this platform writes its paths.
QString Native(const QString& line)
{
    return QDir::toNativeSeparators(line);
}

FileResult Result(Outcome outcome)
{
    FileResult result;
    result.outcome = outcome;
    result.source = u"/home/x/project/a.gltf"_s;
    result.target = u"/home/x/Corsync/Demo/a.gltf"_s;
    return result;
}

FileResult WithProblem(Outcome outcome, const QString& text, const QString& plugin = {})
{
    FileResult result = Result(outcome);
    result.problems.append({Stage::CopyFiles, ProblemKind::NotCopied, result.source, text, plugin});
    return result;
}

FileResult WithRemark(Outcome outcome, Remark remark)
{
    FileResult result = Result(outcome);
    result.remark = remark;
    return result;
}

Summary SummaryOf(const QList<FileResult>& results)
{
    Summary summary;
    for (const FileResult& result : results) {
        ++summary.counts[result.outcome];
        summary.filesWithProblems += result.IsProblem() ? 1 : 0;
        summary.pluginFailures += result.PluginFailed() ? 1 : 0;
    }
    return summary;
}

} // namespace

TEST(ReportLines, ShowSourcesFromHereAndTargetsFromTheCloudFolder)
{
    EXPECT_EQ(TextOf(Result(Outcome::Copied), Folders),
              Native(u"copied     project/a.gltf -> Demo/a.gltf"_s));
    FileResult elsewhere = Result(Outcome::Copied);
    elsewhere.source = u"/srv/a.gltf"_s;
    EXPECT_EQ(TextOf(elsewhere, Folders), Native(u"copied     /srv/a.gltf -> Demo/a.gltf"_s));
}

TEST(ReportLines, TellWhatHappenedToEachFile)
{
    struct Row
    {
        FileResult result;
        QString line;
    };
    FileResult missing = Result(Outcome::Missing);
    missing.linkedFrom = {u"/home/x/b.gltf"_s, u"/srv/c.gltf"_s};
    FileResult moved = Result(Outcome::Replaced);
    moved.sourceDeleted = true;
    const QList<Row> rows = {
        {Result(Outcome::Renamed), u"renamed    project/a.gltf -> Demo/a.gltf"_s},
        {Result(Outcome::Kept), u"kept       project/a.gltf -> Demo/a.gltf"_s},
        {Result(Outcome::Unchanged), u"unchanged  project/a.gltf -> Demo/a.gltf"_s},
        {Result(Outcome::InPlace), u"in place   project/a.gltf"_s},
        {moved, u"replaced   project/a.gltf -> Demo/a.gltf (source deleted)"_s},
        {missing, u"missing    project/a.gltf (linked from b.gltf, /srv/c.gltf)"_s},
        {Result(Outcome::Locked), u"locked     project/a.gltf -> Demo/a.gltf (links pending)"_s},
        {WithProblem(Outcome::Failed, u"disk full"_s),
         u"failed     project/a.gltf -> Demo/a.gltf: disk full"_s},
        {WithRemark(Outcome::Skipped, Remark::NoFile),
         u"skipped    project/a.gltf: neither a file nor a folder"_s},
        {Result(Outcome::NotDone), u"not done   project/a.gltf -> Demo/a.gltf"_s},
    };
    for (const Row& row : rows)
        EXPECT_EQ(TextOf(row.result, Folders), Native(row.line));
}

TEST(ReportLines, OfUrlsShowThemAsTheyAre)
{
    FileResult url = Result(Outcome::Url);
    url.source = u"https://example.org/a.png"_s;
    EXPECT_EQ(TextOf(url, Folders), u"url        https://example.org/a.png"_s);
}

TEST(ReportLines, StayOneLineForANameWithALineBreak)
{
    FileResult result = Result(Outcome::Copied);
    result.source = u"/home/x/a\nb.gltf"_s;
    EXPECT_EQ(TextOf(result, Folders), Native(u"copied     a?b.gltf -> Demo/a.gltf"_s));
}

TEST(ReportLines, OfConflictsNameBothFilesAndTheObstacle)
{
    Conflict conflict{ConflictKind::SameTarget, u"/home/x/b/a.prt"_s, u"/home/x/Corsync/a.prt"_s,
                      u"/home/x/c/a.prt"_s, true};
    EXPECT_EQ(TextOf(conflict, Folders),
              Native(u"conflict   b/a.prt -> a.prt: also wanted by c/a.prt"_s));
    conflict.kind = ConflictKind::TargetTaken;
    EXPECT_EQ(TextOf(conflict, Folders),
              Native(u"conflict   b/a.prt -> a.prt: a file stands there"_s));
}

TEST(ReportLines, ShowAPathWithAPlaceholderAsItIs)
{
    FileResult result = WithProblem(Outcome::Failed, u"%1 is full, %2"_s);
    result.source = u"/home/x/100%1 %L2.gltf"_s;
    EXPECT_EQ(TextOf(result, Folders),
              Native(u"failed     100%1 %L2.gltf -> Demo/a.gltf: %1 is full, %2"_s));
}

TEST(ReportLines, TellEachReasonOnceAndOfAPluginOnlyWhatItSaid)
{
    FileResult result = Result(Outcome::Copied);
    const auto problem = [&](ProblemKind kind, const QString& text) {
        result.problems.append({Stage::ExtractFileLinks, kind, result.source, text, u"p.so"_s});
    };
    problem(ProblemKind::LinksNotRead, u"The links could not be read"_s);
    EXPECT_TRUE(TextOf(result, Folders).endsWith(u": The links could not be read"_s));
    problem(ProblemKind::PluginMessage, u"line 3: a comma too many"_s);
    problem(ProblemKind::PluginMessage, u"line 3: a comma too many"_s);
    EXPECT_TRUE(TextOf(result, Folders).endsWith(u"a.gltf: line 3: a comma too many"_s));
}

TEST(ReportLines, EndWithCounts)
{
    EXPECT_EQ(
        CountLine(SummaryOf({Result(Outcome::Missing), Result(Outcome::Copied),
                             Result(Outcome::Copied), WithProblem(Outcome::Copied, u"bad"_s)}),
                  Folders),
        Native(u"3 copied, 1 missing, 1 with problems; cloud cache folder /home/x/Corsync"_s));
    EXPECT_EQ(CountLine(Summary(), Folders),
              Native(u"no files; cloud cache folder /home/x/Corsync"_s));
}

TEST(ReportJson, HoldsFullPathsAndOnlyWhatThereIsToSay)
{
    const QJsonObject copied = JsonOf(Result(Outcome::Copied));
    EXPECT_EQ(copied[u"event"].toString(), u"file"_s);
    EXPECT_EQ(copied[u"status"].toString(), u"copied"_s);
    EXPECT_EQ(copied[u"source"].toString(), u"/home/x/project/a.gltf"_s);
    EXPECT_EQ(copied[u"target"].toString(), u"/home/x/Corsync/Demo/a.gltf"_s);
    EXPECT_EQ(copied.size(), 4);
    FileResult missing = Result(Outcome::Missing);
    missing.linkedFrom = {u"/b"_s};
    EXPECT_EQ(JsonOf(missing)[u"linkedFrom"].toArray().size(), 1);
    EXPECT_FALSE(JsonOf(missing).contains(u"target"));
}

TEST(ReportJson, SummarisesCountsAndExitCode)
{
    Summary done = SummaryOf({Result(Outcome::Copied), Result(Outcome::NotDone)});
    done.cancelled = true;
    const QJsonObject summary = JsonOf(done);
    EXPECT_EQ(summary[u"files"].toInt(), 2);
    EXPECT_EQ(summary[u"counts"][u"not-done"].toInt(), 1);
    EXPECT_EQ(summary[u"exitCode"].toInt(), 20);
}
