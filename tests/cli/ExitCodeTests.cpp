// SPDX-License-Identifier: Apache-2.0

#include "ExitCode.h"

#include <gtest/gtest.h>

using namespace Halvern::Cli;
using namespace Halvern::Jobs;

namespace {

Halvern::FileLink::Problem ProblemOf(const QString& plugin)
{
    return {Halvern::FileLink::Stage::CopyFiles,
            Halvern::FileLink::ProblemKind::NotCopied,
            {},
            QString::fromLatin1("why"),
            plugin};
}

} // namespace

TEST(ExitCodes, NothingToReportIsComplete)
{
    EXPECT_EQ(MostSerious({}), ExitCode::Complete);
    EXPECT_EQ(MostSerious({ExitCode::Complete, ExitCode::Complete}), ExitCode::Complete);
}

TEST(ExitCodes, TheMostSeriousWinsWhateverTheOrder)
{
    const QList<ExitCode> ascending = {
        ExitCode::Complete,  ExitCode::MissingLinks,     ExitCode::Locked,
        ExitCode::Failed,    ExitCode::PluginOrDatabase, ExitCode::Collisions,
        ExitCode::Cancelled, ExitCode::SourceMissing,    ExitCode::Usage};
    for (qsizetype i = 0; i < ascending.size(); ++i) {
        for (qsizetype j = 0; j <= i; ++j) {
            EXPECT_EQ(MostSerious({ascending[i], ascending[j]}), ascending[i]) << i << ' ' << j;
            EXPECT_EQ(MostSerious({ascending[j], ascending[i]}), ascending[i]) << i << ' ' << j;
        }
    }
}

TEST(ExitCodes, OfAnImportAreTheMostSeriousOfAllThatIsReported)
{
    Summary summary;
    EXPECT_EQ(ExitCodeOf(summary), ExitCode::Complete);
    summary.counts[Outcome::Copied] = 1;
    summary.counts[Outcome::Skipped] = 1;
    summary.counts[Outcome::Url] = 1;
    summary.counts[Outcome::Kept] = 1;
    summary.counts[Outcome::Unchanged] = 1;
    EXPECT_EQ(ExitCodeOf(summary), ExitCode::Complete);
    summary.counts[Outcome::Missing] = 1;
    EXPECT_EQ(ExitCodeOf(summary), ExitCode::MissingLinks);
    summary.counts[Outcome::Locked] = 1;
    EXPECT_EQ(ExitCodeOf(summary), ExitCode::Locked);
    summary.filesWithProblems = 1;
    EXPECT_EQ(ExitCodeOf(summary), ExitCode::Failed);
    summary.databaseError = QString::fromLatin1("locked");
    EXPECT_EQ(ExitCodeOf(summary), ExitCode::PluginOrDatabase);
    summary.conflicts = 1;
    EXPECT_EQ(ExitCodeOf(summary), ExitCode::Collisions);
    summary.cancelled = true;
    EXPECT_EQ(ExitCodeOf(summary), ExitCode::Cancelled);
}

TEST(ExitCodes, OfAnImportWithAProblemSayWhetherAPluginHasIt)
{
    Summary ofAFile;
    ofAFile.filesWithProblems = 1;
    EXPECT_EQ(ExitCodeOf(ofAFile), ExitCode::Failed);
    ofAFile.pluginFailures = 1;
    EXPECT_EQ(ExitCodeOf(ofAFile), ExitCode::PluginOrDatabase);
    Summary ofNoFile;
    ofNoFile.problems = {ProblemOf({})};
    EXPECT_EQ(ExitCodeOf(ofNoFile), ExitCode::Failed);
    ofNoFile.problems.append(ProblemOf(QString::fromLatin1("p.so")));
    EXPECT_EQ(ExitCodeOf(ofNoFile), ExitCode::PluginOrDatabase);
}
