// SPDX-License-Identifier: Apache-2.0

#include "Report.h"

#include "FileTree.h"

#include <QtCore/QDir>
#include <QtCore/QJsonArray>

#include <gtest/gtest.h>

using namespace Halvern::Cli;

namespace {

const ReportFolders Folders{u"/home/x"_qs, u"/home/x/Corsync"_qs};

/// An expected line as this platform writes its paths.
QString Native(const QString& line)
{
    return QDir::toNativeSeparators(line);
}

FileOutcome Outcome(FileStatus status, const QString& reason = {})
{
    FileOutcome outcome;
    outcome.status = status;
    outcome.source = u"/home/x/project/a.gltf"_qs;
    outcome.target = u"/home/x/Corsync/Demo/a.gltf"_qs;
    outcome.reason = reason;
    return outcome;
}

} // namespace

TEST(ReportLines, ShowSourcesFromHereAndTargetsFromTheCloudFolder)
{
    EXPECT_EQ(TextOf(Outcome(FileStatus::Copied), Folders),
              Native(u"copied     project/a.gltf -> Demo/a.gltf"_qs));
    FileOutcome elsewhere = Outcome(FileStatus::Copied);
    elsewhere.source = u"/srv/a.gltf"_qs;
    EXPECT_EQ(TextOf(elsewhere, Folders), Native(u"copied     /srv/a.gltf -> Demo/a.gltf"_qs));
}

TEST(ReportLines, TellWhatHappenedToEachFile)
{
    struct Row
    {
        FileOutcome outcome;
        QString line;
    };
    FileOutcome missing = Outcome(FileStatus::Missing);
    missing.linkedFrom = {u"/home/x/b.gltf"_qs, u"/srv/c.gltf"_qs};
    FileOutcome moved = Outcome(FileStatus::Replaced);
    moved.moved = true;
    const QList<Row> rows = {
        {Outcome(FileStatus::Renamed), u"renamed    project/a.gltf -> Demo/a.gltf"_qs},
        {Outcome(FileStatus::Kept), u"kept       project/a.gltf -> Demo/a.gltf"_qs},
        {Outcome(FileStatus::Unchanged), u"unchanged  project/a.gltf -> Demo/a.gltf"_qs},
        {Outcome(FileStatus::InPlace), u"in place   project/a.gltf"_qs},
        {moved, u"replaced   project/a.gltf -> Demo/a.gltf (source deleted)"_qs},
        {missing, u"missing    project/a.gltf (linked from b.gltf, /srv/c.gltf)"_qs},
        {Outcome(FileStatus::Locked),
         u"locked     project/a.gltf -> Demo/a.gltf (links pending)"_qs},
        {Outcome(FileStatus::Failed, u"disk full"_qs),
         u"failed     project/a.gltf -> Demo/a.gltf: disk full"_qs},
        {Outcome(FileStatus::Skipped, u"why"_qs), u"skipped    project/a.gltf: why"_qs},
        {Outcome(FileStatus::NotDone), u"not done   project/a.gltf -> Demo/a.gltf"_qs},
    };
    for (const Row& row : rows)
        EXPECT_EQ(TextOf(row.outcome, Folders), Native(row.line));
}

TEST(ReportLines, OfUrlsShowThemAsTheyAre)
{
    FileOutcome url = Outcome(FileStatus::Url);
    url.source = u"https://example.org/a.png"_qs;
    EXPECT_EQ(TextOf(url, Folders), u"url        https://example.org/a.png"_qs);
}

TEST(ReportLines, StayOneLineForANameWithALineBreak)
{
    FileOutcome outcome = Outcome(FileStatus::Copied);
    outcome.source = u"/home/x/a\nb.gltf"_qs;
    EXPECT_EQ(TextOf(outcome, Folders), Native(u"copied     a?b.gltf -> Demo/a.gltf"_qs));
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

TEST(ReportLines, EndWithCounts)
{
    EXPECT_EQ(
        CountLine({Outcome(FileStatus::Missing), Outcome(FileStatus::Copied),
                   Outcome(FileStatus::Copied), Outcome(FileStatus::Copied, u"bad"_qs)},
                  Folders),
        Native(u"3 copied, 1 missing, 1 with problems; cloud cache folder /home/x/Corsync"_qs));
    EXPECT_EQ(CountLine({}, Folders), Native(u"no files; cloud cache folder /home/x/Corsync"_qs));
}

TEST(ReportResult, IsTheMostSeriousOfAllThatIsReported)
{
    ImportReport report;
    EXPECT_EQ(report.Result(), ExitCode::Complete);
    report.files = {Outcome(FileStatus::Copied), Outcome(FileStatus::Missing)};
    EXPECT_EQ(report.Result(), ExitCode::MissingLinks);
    report.files.append(Outcome(FileStatus::Locked));
    EXPECT_EQ(report.Result(), ExitCode::Locked);
    report.files.append(Outcome(FileStatus::Failed, u"why"_qs));
    EXPECT_EQ(report.Result(), ExitCode::Failed);
    report.databaseError = u"locked"_qs;
    EXPECT_EQ(report.Result(), ExitCode::PluginOrDatabase);
    report.cancelled = true;
    EXPECT_EQ(report.Result(), ExitCode::Cancelled);
}

TEST(ReportResult, AFileInPlaceWithAProblemIsNotComplete)
{
    ImportReport report;
    report.files = {Outcome(FileStatus::Copied, u"parked file left"_qs)};
    EXPECT_EQ(report.Result(), ExitCode::Failed);
    report.files[0].pluginFailed = true;
    EXPECT_EQ(report.Result(), ExitCode::PluginOrDatabase);
}

TEST(ReportResult, WhatIsSkippedOrNoFileIsComplete)
{
    ImportReport report;
    report.files = {Outcome(FileStatus::Skipped, u"why"_qs), Outcome(FileStatus::Url),
                    Outcome(FileStatus::Kept), Outcome(FileStatus::Unchanged)};
    EXPECT_EQ(report.Result(), ExitCode::Complete);
}

TEST(ReportJson, HoldsFullPathsAndOnlyWhatThereIsToSay)
{
    const QJsonObject copied = JsonOf(Outcome(FileStatus::Copied));
    EXPECT_EQ(copied[u"event"].toString(), u"file"_qs);
    EXPECT_EQ(copied[u"status"].toString(), u"copied"_qs);
    EXPECT_EQ(copied[u"source"].toString(), u"/home/x/project/a.gltf"_qs);
    EXPECT_EQ(copied[u"target"].toString(), u"/home/x/Corsync/Demo/a.gltf"_qs);
    EXPECT_EQ(copied.size(), 4);
    FileOutcome missing = Outcome(FileStatus::Missing);
    missing.linkedFrom = {u"/b"_qs};
    EXPECT_EQ(JsonOf(missing)[u"linkedFrom"].toArray().size(), 1);
    EXPECT_FALSE(JsonOf(missing).contains(u"target"));
}

TEST(ReportJson, SummarisesCountsAndExitCode)
{
    const QJsonObject summary = JsonSummary(
        {Outcome(FileStatus::Copied), Outcome(FileStatus::NotDone)}, 0, ExitCode::Cancelled);
    EXPECT_EQ(summary[u"files"].toInt(), 2);
    EXPECT_EQ(summary[u"counts"][u"not-done"].toInt(), 1);
    EXPECT_EQ(summary[u"exitCode"].toInt(), 20);
}
