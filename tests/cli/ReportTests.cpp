// SPDX-License-Identifier: Apache-2.0

#include "Report.h"

#include "FileTree.h"

#include <QtCore/QDir>
#include <QtCore/QJsonArray>

#include <gtest/gtest.h>

using namespace Halvern::Cli;
using namespace Halvern::Jobs;
using Halvern::FileLink::Problem;
using Halvern::FileLink::ProblemKind;
using Halvern::FileLink::Stage;

namespace {

const ReportFolders Folders{u"/home/x"_qs, u"/home/x/Corsync"_qs};

/// An expected line as this platform writes its paths.
QString Native(const QString& line)
{
    return QDir::toNativeSeparators(line);
}

FileResult Result(Outcome outcome)
{
    FileResult result;
    result.outcome = outcome;
    result.source = u"/home/x/project/a.gltf"_qs;
    result.target = u"/home/x/Corsync/Demo/a.gltf"_qs;
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
              Native(u"copied     project/a.gltf -> Demo/a.gltf"_qs));
    FileResult elsewhere = Result(Outcome::Copied);
    elsewhere.source = u"/srv/a.gltf"_qs;
    EXPECT_EQ(TextOf(elsewhere, Folders), Native(u"copied     /srv/a.gltf -> Demo/a.gltf"_qs));
}

TEST(ReportLines, TellWhatHappenedToEachFile)
{
    struct Row
    {
        FileResult result;
        QString line;
    };
    FileResult missing = Result(Outcome::Missing);
    missing.linkedFrom = {u"/home/x/b.gltf"_qs, u"/srv/c.gltf"_qs};
    FileResult moved = Result(Outcome::Replaced);
    moved.sourceDeleted = true;
    const QList<Row> rows = {
        {Result(Outcome::Renamed), u"renamed    project/a.gltf -> Demo/a.gltf"_qs},
        {Result(Outcome::Kept), u"kept       project/a.gltf -> Demo/a.gltf"_qs},
        {Result(Outcome::Unchanged), u"unchanged  project/a.gltf -> Demo/a.gltf"_qs},
        {Result(Outcome::InPlace), u"in place   project/a.gltf"_qs},
        {moved, u"replaced   project/a.gltf -> Demo/a.gltf (source deleted)"_qs},
        {missing, u"missing    project/a.gltf (linked from b.gltf, /srv/c.gltf)"_qs},
        {Result(Outcome::Locked), u"locked     project/a.gltf -> Demo/a.gltf (links pending)"_qs},
        {WithProblem(Outcome::Failed, u"disk full"_qs),
         u"failed     project/a.gltf -> Demo/a.gltf: disk full"_qs},
        {WithRemark(Outcome::Skipped, Remark::NoFile),
         u"skipped    project/a.gltf: neither a file nor a folder"_qs},
        {Result(Outcome::NotDone), u"not done   project/a.gltf -> Demo/a.gltf"_qs},
    };
    for (const Row& row : rows)
        EXPECT_EQ(TextOf(row.result, Folders), Native(row.line));
}

TEST(ReportLines, OfUrlsShowThemAsTheyAre)
{
    FileResult url = Result(Outcome::Url);
    url.source = u"https://example.org/a.png"_qs;
    EXPECT_EQ(TextOf(url, Folders), u"url        https://example.org/a.png"_qs);
}

TEST(ReportLines, StayOneLineForANameWithALineBreak)
{
    FileResult result = Result(Outcome::Copied);
    result.source = u"/home/x/a\nb.gltf"_qs;
    EXPECT_EQ(TextOf(result, Folders), Native(u"copied     a?b.gltf -> Demo/a.gltf"_qs));
}

TEST(ReportLines, OfConflictsNameBothFilesAndTheObstacle)
{
    Conflict conflict{ConflictKind::SameTarget, u"/home/x/b/a.prt"_qs, u"/home/x/Corsync/a.prt"_qs,
                      u"/home/x/c/a.prt"_qs, true};
    EXPECT_EQ(TextOf(conflict, Folders),
              Native(u"conflict   b/a.prt -> a.prt: also wanted by c/a.prt"_qs));
    conflict.kind = ConflictKind::TargetTaken;
    EXPECT_EQ(TextOf(conflict, Folders),
              Native(u"conflict   b/a.prt -> a.prt: a file stands there"_qs));
}

TEST(ReportLines, ShowAPathWithAPlaceholderAsItIs)
{
    FileResult result = WithProblem(Outcome::Failed, u"%1 is full, %2"_qs);
    result.source = u"/home/x/100%1 %L2.gltf"_qs;
    EXPECT_EQ(TextOf(result, Folders),
              Native(u"failed     100%1 %L2.gltf -> Demo/a.gltf: %1 is full, %2"_qs));
}

TEST(ReportLines, TellEachReasonOnceAndOfAPluginOnlyWhatItSaid)
{
    FileResult result = Result(Outcome::Copied);
    const auto problem = [&](ProblemKind kind, const QString& text) {
        result.problems.append({Stage::ExtractFileLinks, kind, result.source, text, u"p.so"_qs});
    };
    problem(ProblemKind::LinksNotRead, u"The links could not be read"_qs);
    EXPECT_TRUE(TextOf(result, Folders).endsWith(u": The links could not be read"_qs));
    problem(ProblemKind::PluginMessage, u"line 3: a comma too many"_qs);
    problem(ProblemKind::PluginMessage, u"line 3: a comma too many"_qs);
    EXPECT_TRUE(TextOf(result, Folders).endsWith(u"a.gltf: line 3: a comma too many"_qs));
}

TEST(ReportLines, EndWithCounts)
{
    EXPECT_EQ(
        CountLine(SummaryOf({Result(Outcome::Missing), Result(Outcome::Copied),
                             Result(Outcome::Copied), WithProblem(Outcome::Copied, u"bad"_qs)}),
                  Folders),
        Native(u"3 copied, 1 missing, 1 with problems; cloud cache folder /home/x/Corsync"_qs));
    EXPECT_EQ(CountLine(Summary(), Folders),
              Native(u"no files; cloud cache folder /home/x/Corsync"_qs));
}

TEST(ReportJson, HoldsFullPathsAndOnlyWhatThereIsToSay)
{
    const QJsonObject copied = JsonOf(Result(Outcome::Copied));
    EXPECT_EQ(copied[u"event"].toString(), u"file"_qs);
    EXPECT_EQ(copied[u"status"].toString(), u"copied"_qs);
    EXPECT_EQ(copied[u"source"].toString(), u"/home/x/project/a.gltf"_qs);
    EXPECT_EQ(copied[u"target"].toString(), u"/home/x/Corsync/Demo/a.gltf"_qs);
    EXPECT_EQ(copied.size(), 4);
    FileResult missing = Result(Outcome::Missing);
    missing.linkedFrom = {u"/b"_qs};
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
