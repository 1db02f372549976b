// SPDX-License-Identifier: Apache-2.0

// What is saved while the old content of its file is being kept.

#include "JobsFixture.h"

#include "base/HeldFile.h"
#include "base/NativePath.h"
#include "base/Units.h"
#include "syncservices/SyncManager.h"

#include <QtCore/QDir>

#include <chrono>
#include <functional>
#include <thread>
#include <utility>

namespace Halvern::Test {

using namespace Jobs;
using namespace Qt::StringLiterals;

namespace {

/// Holds the base store's lock from the beginning of a phase on. When a file has been copied to the
/// store and waits for the lock, it does something, and lets go.
class WhileAFileIsKept : public IJobObserver
{
public:
    WhileAFileIsKept(const QString& store, Phase phase, std::function<void()> action)
        : m_store(store), m_phase(phase), m_action(std::move(action))
    {}
    ~WhileAFileIsKept() override
    {
        if (m_thread.joinable())
            m_thread.join();
    }
    void PhaseBegun(Phase phase, qint64) override
    {
        if (phase != m_phase || m_thread.joinable())
            return;
        const QString lock = m_store + u"/lock"_s;
        ASSERT_TRUE(m_lock.Hold(Base::NativePath(Base::Units(lock))));
        m_thread = std::thread([this] { Run(); });
    }
    bool HasActed() const { return m_hasActed; }

private:
    void Run()
    {
        using namespace std::chrono_literals;
        const auto end = std::chrono::steady_clock::now() + 8s;
        while (QDir(m_store).entryList({u"*.part"_s}, QDir::Files).isEmpty() &&
               std::chrono::steady_clock::now() < end)
            std::this_thread::sleep_for(1ms);
        // For the copy, and the look at the file after it.
        std::this_thread::sleep_for(300ms);
        m_hasActed = !QDir(m_store).entryList({u"*.part"_s}, QDir::Files).isEmpty();
        m_action();
        m_lock.Release();
    }

    QString m_store;
    Phase m_phase;
    std::function<void()> m_action;
    Base::HeldFile m_lock;
    std::thread m_thread;
    bool m_hasActed = false;
};

class LastLook : public JobsFixture
{
protected:
    LastLook()
    {
        Save("first");
        Begin();
        Import(Wanted());
        // From now on the store knows the paths.
        Save("second, longer");
        Import(Wanted());
    }
    void Save(const QByteArray& content)
    {
        tree.File(u"work/proj/a.txt"_s, content).File(u"work/proj/b.txt"_s, content);
    }
    ImportRequest Wanted() const { return Request({u"proj"_s}); }
    /// Saves a copy while its old content, the first that is kept in the phase, is kept.
    JobResult ImportMeanwhile(const ImportRequest& request, Phase phase, const QString& copy)
    {
        // The store knows this process already, and takes the lock for each copy alone.
        const SyncServices::BaseStoreRun run;
        QString error;
        EXPECT_TRUE(SyncServices::SyncManager::GetInstance()->SaveVersion(
            tree.Path(u"work/proj/a.txt"_s), &error))
            << error.toStdString();
        WhileAFileIsKept observer(tree.Path(u"sync.db.base"_s), phase,
                                  [&] { tree.File(copy, "mine"); });
        ImportJob job(*session, request, &observer);
        EXPECT_TRUE(job.MakePlan().conflicts.isEmpty());
        const JobResult result = job.Execute();
        EXPECT_TRUE(observer.HasActed());
        return result;
    }
};

} // namespace

TEST_F(LastLook, SparesACopyThatIsSavedWhileItsOldContentIsKept)
{
    Save("third, longer still");
    const JobResult result = ImportMeanwhile(Wanted(), Phase::Copying, u"cloud/proj/a.txt"_s);
    EXPECT_EQ(tree.Read(u"cloud/proj/a.txt"_s), "mine");
    EXPECT_EQ(LinesOf(result.files, tree).filter(u"a.txt"_s).filter(u"failed"_s).size(), 1)
        << LinesOf(result.files, tree).join(u'\n').toStdString();
    EXPECT_EQ(tree.Read(u"cloud/proj/b.txt"_s), "third, longer still");
}

TEST_F(LastLook, SparesACopyThatIsSavedWhileItIsPruned)
{
    tree.File(u"work/proj/a.txt"_s, "third, longer still").Remove(u"work/proj/b.txt"_s);
    ImportRequest request = Wanted();
    request.prune = true;
    const JobResult result = ImportMeanwhile(request, Phase::Recording, u"cloud/proj/b.txt"_s);
    EXPECT_EQ(tree.Read(u"cloud/proj/b.txt"_s), "mine");
    EXPECT_EQ(result.summary.Count(Outcome::Pruned), 0);
    EXPECT_EQ(result.summary.filesWithProblems, 1);
}

} // namespace Halvern::Test
