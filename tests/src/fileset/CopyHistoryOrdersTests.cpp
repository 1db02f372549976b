// SPDX-License-Identifier: Apache-2.0

#include "CountingDatabase.h"
#include "Mappings.h"
#include "ServicesFixture.h"
#include "fileset/FileCopyHistory.h"

#include <QtCore/QMap>

#include <gtest/gtest.h>

#include <array>
#include <optional>

namespace {

using namespace Halvern;
using namespace Halvern::FileLink;
using namespace Halvern::Test;
using namespace Qt::StringLiterals;
using SyncFolderManagerLib::FolderManager;

constexpr int User = 7;

/// A store that can be told to refuse writes.
class RefusingDatabase : public CountingDatabase
{
public:
    using CountingDatabase::CountingDatabase;

    bool AddAndUpdateFileCopyHistory(List<FileMapping> added, List<FileMapping> updated) override
    {
        if (!refuses)
            return CountingDatabase::AddAndUpdateFileCopyHistory(std::move(added),
                                                                 std::move(updated));
        calls.append(u"refused"_s);
        return false;
    }

    bool refuses = false;
};

enum class Step
{
    Load,
    FindKnown,
    FindNew,
    AddKnown,
    AddNew,
    Save,
    FailingSave
};
constexpr std::array allSteps = {Step::Load,   Step::FindKnown, Step::FindNew,    Step::AddKnown,
                                 Step::AddNew, Step::Save,      Step::FailingSave};
constexpr std::array stepNames = {"Load",   "FindKnown", "FindNew",    "AddKnown",
                                  "AddNew", "Save",      "FailingSave"};

/// The buckets as they must be: target paths by lower-cased source path. Each record has a target
/// path of its own, by which it is known again when it was read from the database.
class Model
{
public:
    using Bucket = QMap<QString, QString>;

    Bucket stored;
    int reads = 0;
    int writes = 0;

    void Load()
    {
        m_history = stored;
        m_loaded = true;
        ++reads;
    }
    QString Find(const QString& key)
    {
        if (!m_loaded)
            Load();
        for (const Bucket* bucket : {&m_history, &m_updated, &m_added})
            if (bucket->contains(key))
                return bucket->value(key);
        return QString();
    }
    void Add(const QString& key, const QString& target)
    {
        if (m_updated.contains(key) || m_history.remove(key))
            m_updated[key] = target;
        else
            m_added[key] = target;
    }
    bool Save(bool works)
    {
        if (m_added.isEmpty() && m_updated.isEmpty())
            return true;
        ++writes;
        for (const Bucket* bucket : {&m_added, &m_updated}) {
            if (works)
                stored.insert(*bucket);
            m_history.insert(*bucket);
        }
        m_added.clear();
        m_updated.clear();
        return works;
    }

private:
    bool m_loaded = false;
    Bucket m_history;
    Bucket m_added;
    Bucket m_updated;
};

class CopyHistoryOrders : public ServicesFixture
{
protected:
    CopyHistoryOrders()
    {
        FolderManager::Uninitialize();
        settings.databaseFile = u":memory:"_s;
        FolderManager::Configure(settings);
        FolderManager::Initialize();
        FolderManager* const manager = FolderManager::GetInstance();
        database = std::make_shared<RefusingDatabase>(manager->GetSyncDatabase());
        manager->SetSyncDatabase(database);
    }

    /// One row in the database, nothing in memory.
    void Begin()
    {
        ASSERT_TRUE(database->DeleteAllFileCopyHistory(User));
        ASSERT_TRUE(database->AddAndUpdateFileCopyHistory({Record(u"D:/w/known.prt"_s)}, {}));
        database->calls.clear();
        model = Model();
        model.stored = {{u"d:/w/known.prt"_s, lastTarget}};
        history.emplace();
    }

    FileMappingPointer Record(const QString& source)
    {
        lastTarget = u"D:/c/%1"_s.arg(++records);
        return MakeFile(source, FileMapping::NoFlag, lastTarget);
    }
    QString Find(const QString& source)
    {
        const FileMappingPointer found = history->Find(source, User);
        return found ? found->GetTargetFile() : QString();
    }

    void Run(Step step)
    {
        // The letter case differs from record to record: one key all the same.
        const QString known = records % 2 ? u"D:/w/known.prt"_s : u"d:/W/KNOWN.prt"_s;
        const QString fresh = records % 2 ? u"D:/w/new.prt"_s : u"D:/W/New.prt"_s;
        switch (step) {
        case Step::Load:
            EXPECT_TRUE(history->Load(User));
            model.Load();
            return;
        case Step::FindKnown:
            EXPECT_EQ(Find(known), model.Find(known.toLower()));
            return;
        case Step::FindNew:
            EXPECT_EQ(Find(fresh), model.Find(fresh.toLower()));
            return;
        case Step::AddKnown:
            EXPECT_TRUE(history->AddOrUpdate(Record(known)));
            model.Add(known.toLower(), lastTarget);
            return;
        case Step::AddNew:
            EXPECT_TRUE(history->AddOrUpdate(Record(fresh)));
            model.Add(fresh.toLower(), lastTarget);
            return;
        case Step::Save:
        case Step::FailingSave:
            database->refuses = step == Step::FailingSave;
            EXPECT_EQ(history->Save(), model.Save(!database->refuses));
            database->refuses = false;
            return;
        }
    }

    /// What stands in the database after the end, and how often it was asked and written.
    void End()
    {
        history.reset();
        model.Save(true);
        EXPECT_EQ(database->calls.filter(u"read"_s).size(), model.reads);
        EXPECT_EQ(database->calls.size(), model.reads + model.writes);
        Model::Bucket rows;
        for (const FileMappingPointer& row : database->GetFileCopyHistoryByAuthenticationId(User))
            rows.insert(row->GetSourceFile().toLower(), row->GetTargetFile());
        EXPECT_EQ(rows, model.stored);
    }

    void RunSequence(int number, int length)
    {
        std::string trace;
        Begin();
        for (int i = 0; i < length; ++i) {
            const int step = number % int(allSteps.size());
            number /= int(allSteps.size());
            trace += std::string(" ") + stepNames[size_t(step)];
            Run(allSteps[size_t(step)]);
        }
        End();
        if (HasFailure())
            ADD_FAILURE() << "in" << trace;
    }

    std::shared_ptr<RefusingDatabase> database;
    std::optional<FileCopyHistory> history;
    Model model;
    QString lastTarget;
    int records = 0;
};

TEST_F(CopyHistoryOrders, OfLoadingFindingRecordingAndSavingAllGiveTheirAnswers)
{
    constexpr int length = 4;
    int count = 1;
    for (int i = 0; i < length; ++i)
        count *= int(allSteps.size());
    for (int number = 0; number < count && !HasFailure(); ++number)
        RunSequence(number, length);
}

TEST_F(CopyHistoryOrders, OfLongRunsGiveTheirAnswersToo)
{
    quint32 seed = 1;
    for (int run = 0; run < 200 && !HasFailure(); ++run) {
        Begin();
        for (int i = 0; i < 30; ++i) {
            seed = seed * 1664525u + 1013904223u;
            Run(allSteps[(seed >> 16) % allSteps.size()]);
        }
        End();
    }
}

} // namespace
