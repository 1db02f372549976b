// SPDX-License-Identifier: Apache-2.0

#include "ExitCode.h"

#include <gtest/gtest.h>

using namespace Halvern::Cli;

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
