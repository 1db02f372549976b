// SPDX-License-Identifier: Apache-2.0

// A source folder that is swapped for a symbolic link while the job runs: what the link leads to is
// not deleted.

#include "FileStamp.h"
#include "FileTree.h"

#include "corsync/ImportJob.h"

#include <gtest/gtest.h>

#include <QtCore/QDir>
#include <QtCore/QFile>

#include <unistd.h>

namespace Halvern::Test {

using namespace Jobs;
using namespace Qt::StringLiterals;

namespace {

/// Once all is copied, work/proj is put aside and becomes a link to precious.
class SwapsTheFolder : public IJobObserver
{
public:
    explicit SwapsTheFolder(FileTree& tree) : m_tree(tree) {}
    void PhaseBegun(Phase phase, qint64) override
    {
        if (phase != Phase::Recording)
            return;
        ASSERT_TRUE(QDir().rename(m_tree.Path(u"work/proj"_s), m_tree.Path(u"work/aside"_s)));
        ASSERT_TRUE(QFile::link(m_tree.Path(u"precious"_s), m_tree.Path(u"work/proj"_s)));
    }

private:
    FileTree& m_tree;
};

} // namespace

TEST(ASwappedSourceFolder, LeadsNoDeletionElsewhere)
{
    FileTree tree;
    tree.File(u"work/proj/a.txt"_s, "a").File(u"work/proj/sub/b.txt"_s, "b");
    // Even the same files, so that only the way tells them apart.
    ASSERT_TRUE(QDir().mkpath(tree.Path(u"precious/sub"_s)));
    for (const QString& name : {u"a.txt"_s, u"sub/b.txt"_s})
        ASSERT_EQ(::link(QFile::encodeName(tree.Path(u"work/proj/"_s + name)).constData(),
                         QFile::encodeName(tree.Path(u"precious/"_s + name)).constData()),
                  0);
    const auto precious = tree.Contents(u"precious"_s);
    SyncServices::ServicesSettings settings;
    settings.cloudCacheFolder = tree.Path(u"cloud"_s);
    settings.databaseFile = tree.Path(u"sync.db"_s);
    const Session session(settings, {});
    ImportRequest request;
    request.sources = {tree.Path(u"work/proj"_s)};
    request.move = true;
    SwapsTheFolder observer(tree);
    ImportJob job(session, request, &observer);
    job.MakePlan();
    const JobResult result = job.Execute();
    EXPECT_EQ(tree.Contents(u"precious"_s), precious);
    EXPECT_EQ(tree.Contents(u"work/aside"_s), precious);
    EXPECT_EQ(StampOf(tree.Path(u"work/proj"_s)).kind, "link");
    EXPECT_EQ(tree.Contents(u"cloud/proj"_s), precious);
    EXPECT_EQ(result.summary.filesWithProblems, 2);
    for (const FileResult& file : result.files) {
        EXPECT_EQ(file.sourceStays, SourceStays::NotDeleted);
        EXPECT_EQ(file.outcome, Outcome::Copied);
    }
}

} // namespace Halvern::Test
