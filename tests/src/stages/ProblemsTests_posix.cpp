// SPDX-License-Identifier: Apache-2.0

// What the permissions of folders refuse, as the host is told it.

#include "CollectedProblems.h"
#include "CopyingFixture.h"
#include "OrdinaryRights.h"

#include <sys/stat.h>

namespace Halvern::Test {

using FileLink::ProblemKind;
using FileLink::Stage;

namespace {

class RefusedByTheSystem : public CopyingFixture
{
protected:
    RefusedByTheSystem() { importer->SetProblemSink(problems); }
    ~RefusedByTheSystem() override { SetMode(0755); }

    void SetMode(mode_t mode)
    {
        if (folder.isEmpty())
            return;
        EXPECT_EQ(::chmod(QFile::encodeName(tree.Path(folder)).constData(), mode), 0);
    }
    /// Nothing can be made, renamed or deleted in it.
    void Close(const QString& relative)
    {
        folder = relative;
        SetMode(0555);
    }

    QString folder;
    std::shared_ptr<CollectedProblems> problems = std::make_shared<CollectedProblems>();
};

} // namespace

TEST_F(RefusedByTheSystem, AReplacementIsTwoProblemsWithTheSystemsWords)
{
    tree.File("src/a.prt").File("cloud/P/a.prt", "old");
    const auto mapping = Add("src/a.prt", "P/a.prt");
    Close("cloud/P");
    const OrdinaryRights rights;
    EXPECT_FALSE(Copy(mapping));
    ASSERT_EQ(problems->list.size(), 2);
    EXPECT_EQ(problems->list[0].kind, ProblemKind::TargetNotParked);
    EXPECT_TRUE(
        problems->list[0].text.startsWith("The existing file could not be put aside: Cannot "));
    EXPECT_EQ(problems->list[1].kind, ProblemKind::NotCopied);
    EXPECT_EQ(problems->list[1].text, "Destination file exists");
    for (const auto& problem : problems->list) {
        EXPECT_EQ(problem.stage, Stage::CopyFiles);
        EXPECT_EQ(problem.file, tree.Path("src/a.prt"));
    }
}

TEST_F(RefusedByTheSystem, ASourceThatStaysIsNamedAfterAMove)
{
    tree.File("src/a.prt");
    const auto mapping = Add("src/a.prt", "a.prt");
    Close("src");
    const OrdinaryRights rights;
    EXPECT_FALSE(Copy(mapping, true));
    ASSERT_EQ(problems->list.size(), 1);
    EXPECT_EQ(problems->list[0].kind, ProblemKind::SourceNotDeleted);
    EXPECT_EQ(problems->list[0].file, tree.Path("src/a.prt"));
    EXPECT_EQ(problems->list[0].text,
              "The source was copied, but could not be deleted: Permission denied");
}

} // namespace Halvern::Test
