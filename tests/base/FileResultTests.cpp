// SPDX-License-Identifier: Apache-2.0

#include "BaseFiles.h"
#include "FileTree.h"
#include "base/Directory.h"
#include "base/FileResult.h"

#include <gtest/gtest.h>

namespace Halvern::Test {

using namespace Qt::StringLiterals;
using Base::FileProblem;
using Base::FileResult;

TEST(FileResults, HaveAKind)
{
    EXPECT_EQ(FileResult().Problem(), FileProblem::None);
    EXPECT_EQ(FileResult::Failed("why").Problem(), FileProblem::Other);
    EXPECT_EQ(FileResult::Failed("why", 0, true).Problem(), FileProblem::Held);
    const FileResult refused = FileResult::Refused(FileProblem::LeadsOutside, "why");
    EXPECT_FALSE(refused);
    EXPECT_EQ(refused.Problem(), FileProblem::LeadsOutside);
    EXPECT_EQ(refused.Text(), "why");
}

TEST(FileResults, HaveTheKindThatTheNumberOfTheSystemTells)
{
    FileTree tree;
    Base::Handle handle = Base::NoHandle;
    const FileResult missing = Base::OpenForReading(Native(tree.Path(u"none"_s)), handle);
    EXPECT_EQ(missing.Problem(), FileProblem::Missing);
    EXPECT_EQ(Base::ProblemOf(missing.Code()), FileProblem::Missing);
    EXPECT_EQ(FileResult::Refused(FileProblem::Changed, "why", missing.Code()).Problem(),
              FileProblem::Changed);
    EXPECT_EQ(Base::ProblemOf(0), FileProblem::Other);
}

} // namespace Halvern::Test
