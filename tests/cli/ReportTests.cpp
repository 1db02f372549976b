// SPDX-License-Identifier: Apache-2.0

#include "Report.h"

#include "FileTree.h"

#include <QtCore/QDateTime>
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

FileResult WithRemark(Outcome outcome, Remark remark, const QString& detail = {})
{
    FileResult result = Result(outcome);
    result.remark = remark;
    result.detail = detail;
    return result;
}

Conflict BothChanged()
{
    Conflict conflict{
        ConflictKind::BothChanged, u"/home/x/b/a.prt"_s, u"/home/x/Corsync/a.prt"_s, {}, true};
    const QDateTime noon(QDate(2026, 3, 1), QTime(12, 0, 0));
    conflict.sourceSide = {1234, noon, noon.addDays(-1), 1200};
    conflict.targetSide = {7, noon.addSecs(3600), {}, 0};
    return conflict;
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
    FileResult outside = Result(Outcome::Copied);
    outside.outside = true;
    const QList<Row> rows = {
        {Result(Outcome::Renamed), u"renamed    project/a.gltf -> Demo/a.gltf"_s},
        {Result(Outcome::Kept), u"kept       project/a.gltf -> Demo/a.gltf"_s},
        {Result(Outcome::Unchanged), u"unchanged  project/a.gltf -> Demo/a.gltf"_s},
        {Result(Outcome::InPlace), u"in place   project/a.gltf"_s},
        {moved, u"replaced   project/a.gltf -> Demo/a.gltf (source deleted)"_s},
        {missing, u"missing    project/a.gltf (linked from b.gltf, /srv/c.gltf)"_s},
        {Result(Outcome::Locked), u"locked     project/a.gltf -> Demo/a.gltf (links pending)"_s},
        {WithRemark(Outcome::Locked, Remark::RewritePending),
         u"locked     project/a.gltf -> Demo/a.gltf: its links are still to be rewritten; every "
         "import tries, and so does corsync retry"_s},
        {WithProblem(Outcome::Failed, u"disk full"_s),
         u"failed     project/a.gltf -> Demo/a.gltf: disk full"_s},
        {WithRemark(Outcome::Skipped, Remark::NoFile),
         u"skipped    project/a.gltf: neither a file nor a folder"_s},
        {WithRemark(Outcome::Skipped, Remark::Excluded, u"*.blend1"_s),
         u"skipped    project/a.gltf: excluded by the pattern *.blend1"_s},
        {Result(Outcome::Updated), u"updated    project/a.gltf -> Demo/a.gltf"_s},
        {Result(Outcome::Left), u"left       project/a.gltf -> Demo/a.gltf (the copy was changed, "
                                "the source not)"_s},
        {WithRemark(Outcome::Refused, Remark::SecretPlace),
         u"refused    project/a.gltf: a place where secrets are kept; --within DIR allows it"_s},
        {Result(Outcome::Orphaned), u"orphaned   project/a.gltf -> Demo/a.gltf"_s},
        {Result(Outcome::Pruned), u"pruned     project/a.gltf -> Demo/a.gltf"_s},
        {outside, u"copied     project/a.gltf -> Demo/a.gltf (outside the project)"_s},
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

TEST(ReportLines, OfConflictsTellWhatChangedOnWhichSideAndWhen)
{
    EXPECT_EQ(TextOf(BothChanged(), Folders),
              Native(u"conflict   b/a.prt -> a.prt: both changed since the copy was made: "
                     "the source (1234 bytes, 2026-03-01 12:00:00; before: 1200 bytes, "
                     "2026-02-28 12:00:00) and the copy (7 bytes, 2026-03-01 13:00:00)"_s));
}

TEST(ReportLines, OfFindingsNameThePlaceAndWhatItLacks)
{
    EXPECT_EQ(TextOf(Finding{FindingKind::NoSpace, u"/c"_s, 5000000000, 1000}),
              Native(u"problem    not enough room on the disk that holds /c: 5.0 GB needed, "
                     "1.0 kB available"_s));
    EXPECT_EQ(
        TextOf(Finding{FindingKind::NoFiles, u"/c"_s, 12, 3}),
        Native(u"problem    not enough room for new files (inodes) on the disk that holds /c: "
               "12 needed, 3 available"_s));
    EXPECT_EQ(TextOf(Finding{FindingKind::FolderNotWritable, u"/c/d"_s, 0, 0}),
              Native(u"problem    nothing can be written to /c/d"_s));
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

TEST(ReportLines, OfProblemsNameTheFileUnlessTheTextDoes)
{
    Problem problem{Stage::CopyFiles, ProblemKind::FolderNotMade, u"/c/d"_s, u"disk full"_s, {}};
    EXPECT_EQ(TextOf(problem), Native(u"/c/d: disk full"_s));
    problem.text = Native(u"nothing can be written to /c/d"_s);
    EXPECT_EQ(TextOf(problem), problem.text);
    problem.file.clear();
    EXPECT_EQ(TextOf(problem), problem.text);
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

TEST(ReportLines, CountWhatCameFromOutsideAndWhatNobodyReads)
{
    Summary summary = SummaryOf({Result(Outcome::Copied)});
    EXPECT_EQ(UnknownFormatsLine(summary), QString());
    summary.outside = 2;
    summary.unknownFormats = {{u"rvt"_s, 1}, {u"dwg"_s, 2}, {QString(), 1}};
    EXPECT_EQ(
        CountLine(summary, Folders),
        Native(u"1 copied, 2 from outside the project; cloud cache folder /home/x/Corsync"_s));
    EXPECT_EQ(UnknownFormatsLine(summary), u"4 files whose format no plug-in reads: "
                                           "1 without an extension, 2 .dwg, 1 .rvt"_s);
}

TEST(ReportJson, OfConflictsHoldsBothSidesWithTimesInUtc)
{
    const QJsonObject conflict = JsonOf(BothChanged());
    EXPECT_EQ(conflict[u"kind"].toString(), u"both-changed"_s);
    const QJsonObject source = conflict[u"sourceSide"].toObject();
    EXPECT_EQ(source[u"bytes"].toInt(), 1234);
    EXPECT_EQ(source[u"recordedBytes"].toInt(), 1200);
    const QString modified = source[u"modified"].toString();
    EXPECT_TRUE(modified.endsWith(u".000Z"_s)) << modified.toStdString();
    EXPECT_EQ(QDateTime::fromString(modified, Qt::ISODateWithMs),
              BothChanged().sourceSide.modified);
    EXPECT_FALSE(conflict[u"targetSide"].toObject().contains(u"recordedModified"));
    EXPECT_FALSE(JsonOf(Conflict()).contains(u"sourceSide"));
}

TEST(ReportJson, OfProblemsHoldsFileAndPluginWhereThereAreSome)
{
    const Problem problem{
        Stage::CopyFiles, ProblemKind::FolderNotMade, u"/c/d"_s, u"disk full"_s, {}};
    EXPECT_EQ(JsonOf(problem), (QJsonObject{{u"event"_s, u"problem"_s},
                                            {u"file"_s, u"/c/d"_s},
                                            {u"text"_s, u"disk full"_s}}));
    const Problem ofPlugin{Stage::Plugins, ProblemKind::PluginFault, {}, u"gone"_s, u"p.so"_s};
    EXPECT_EQ(JsonOf(ofPlugin),
              (QJsonObject{
                  {u"event"_s, u"problem"_s}, {u"plugin"_s, u"p.so"_s}, {u"text"_s, u"gone"_s}}));
}

TEST(ReportJson, OfFindingsHoldsKindAndNumbers)
{
    const QJsonObject finding = JsonOf(Finding{FindingKind::NoSpace, u"/c"_s, 5, 1});
    EXPECT_EQ(finding[u"event"].toString(), u"finding"_s);
    EXPECT_EQ(finding[u"kind"].toString(), u"no-space"_s);
    EXPECT_EQ(finding[u"path"].toString(), u"/c"_s);
    EXPECT_EQ(finding[u"needed"].toInt(), 5);
    EXPECT_EQ(finding[u"available"].toInt(), 1);
}

TEST(ReportJson, OfFilesNamesRemarkAndDetailAndWhereTheyComeFrom)
{
    FileResult result = WithRemark(Outcome::Skipped, Remark::Excluded, u"*.bak"_s);
    result.outside = true;
    result.isUnknownFormat = true;
    const QJsonObject object = JsonOf(result);
    EXPECT_EQ(object[u"remark"].toString(), u"excluded"_s);
    EXPECT_EQ(object[u"detail"].toString(), u"*.bak"_s);
    EXPECT_TRUE(object[u"outside"].toBool());
    EXPECT_TRUE(object[u"unknownFormat"].toBool());
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
    EXPECT_EQ(summary[u"outside"].toInt(-1), 0);
    done.outside = 3;
    done.unknownFormats = {{u"dwg"_s, 2}};
    EXPECT_EQ(JsonOf(done)[u"outside"].toInt(), 3);
    EXPECT_EQ(JsonOf(done)[u"unknownFormats"][u"dwg"].toInt(), 2);
}
