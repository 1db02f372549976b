// SPDX-License-Identifier: Apache-2.0

// A source or its folder that is swapped for a symbolic link while the job runs: what the link
// leads to is neither copied where it may not be nor deleted.

#include "FileStamp.h"
#include "FileTree.h"
#include "TestPlugins.h"

#include "corsync/ImportJob.h"

#include <gtest/gtest.h>

#include <QtCore/QDir>
#include <QtCore/QFile>

#include <algorithm>
#include <cstdio>
#include <functional>

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

/// Does something once the plan is made, before the first file is copied.
class BeforeTheCopies : public IJobObserver
{
public:
    explicit BeforeTheCopies(std::function<void()> action) : m_action(std::move(action)) {}
    void PhaseBegun(Phase phase, qint64) override
    {
        if (phase == Phase::Copying)
            m_action();
    }

private:
    std::function<void()> m_action;
};

/// work/proj/top.tlk links work/lib/part.tlk; what lies in "secret" may not come along.
class ASwappedSource : public ::testing::Test
{
protected:
    ASwappedSource()
    {
        tree.File(u"work/proj/top.tlk"_s, "link 1 ../lib/part.tlk\n")
            .File(u"work/lib/part.tlk"_s, "part")
            .File(u"secret/part.tlk"_s, "key");
        RegisterTestResolver(tree, u"plugins"_s);
    }
    JobResult Import(const std::function<void()>& swap)
    {
        SyncServices::ServicesSettings settings;
        settings.cloudCacheFolder = tree.Path(u"cloud"_s);
        settings.databaseFile = tree.Path(u"sync.db"_s);
        settings.isolatePlugins = u"never"_s;
        const Session session(settings, {tree.Path(u"plugins"_s), TestPluginFolder()});
        ImportRequest request;
        request.sources = {tree.Path(u"work/proj"_s)};
        request.within = {tree.Path(u"work"_s)};
        BeforeTheCopies observer(swap);
        ImportJob job(session, request, &observer);
        job.MakePlan();
        return job.Execute();
    }
    bool CloudHoldsTheKey() const
    {
        const FileTree::Snapshot files = tree.Contents(u"cloud"_s);
        return std::any_of(files.begin(), files.end(),
                           [](const QByteArray& bytes) { return bytes.contains("key"); });
    }

    FileTree tree;
};

} // namespace

TEST_F(ASwappedSource, IsNotCopiedFromWhereItMayNotBeTaken)
{
    const JobResult result = Import([&] {
        tree.Remove(u"work/lib/part.tlk"_s);
        ASSERT_TRUE(
            QFile::link(tree.Path(u"secret/part.tlk"_s), tree.Path(u"work/lib/part.tlk"_s)));
    });
    EXPECT_FALSE(CloudHoldsTheKey());
    EXPECT_GT(result.summary.filesWithProblems, 0);
}

TEST_F(ASwappedSource, OfASwappedFolderIsNotCopiedEither)
{
    const JobResult result = Import([&] {
        ASSERT_TRUE(QDir().rename(tree.Path(u"work/lib"_s), tree.Path(u"work/aside"_s)));
        ASSERT_TRUE(QFile::link(tree.Path(u"secret"_s), tree.Path(u"work/lib"_s)));
    });
    EXPECT_FALSE(CloudHoldsTheKey());
    EXPECT_GT(result.summary.filesWithProblems, 0);
}

TEST_F(ASwappedSource, ThatIsOfTheSelectionIsNotCopiedEither)
{
    tree.File(u"work/proj/own.txt"_s, "own");
    const JobResult result = Import([&] {
        tree.Remove(u"work/proj/own.txt"_s);
        ASSERT_TRUE(
            QFile::link(tree.Path(u"secret/part.tlk"_s), tree.Path(u"work/proj/own.txt"_s)));
    });
    EXPECT_FALSE(CloudHoldsTheKey());
    EXPECT_GT(result.summary.filesWithProblems, 0);
}

TEST_F(ASwappedSource, IsCopiedWhenAProgramHasSavedItAnew)
{
    tree.File(u"work/proj/own.txt"_s, "own");
    const JobResult result = Import([&] {
        tree.File(u"work/proj/new.txt"_s, "saved anew");
        ASSERT_EQ(::rename(QFile::encodeName(tree.Path(u"work/proj/new.txt"_s)).constData(),
                           QFile::encodeName(tree.Path(u"work/proj/own.txt"_s)).constData()),
                  0);
    });
    EXPECT_EQ(result.summary.filesWithProblems, 0);
    EXPECT_EQ(tree.Read(u"cloud/proj/own.txt"_s), "saved anew");
}

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
