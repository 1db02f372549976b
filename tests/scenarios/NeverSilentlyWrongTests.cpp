// SPDX-License-Identifier: Apache-2.0

// Random trees, options and prior states, and a model of what an import may do with them. Each
// seed is a history of imports with changes of both sides between them; after each one:
//
//   - outside the cloud folder nothing has changed, but for sources that a move was to delete;
//   - old content of the cloud folder is there or in the base store;
//   - what is kept, left or foreign is the same file with the same bytes and time;
//   - each copy has the content of its source, and its links lead to the copies of what the
//     source's links lead to; dead links stand as they stood;
//   - what an earlier move has deleted is neither missing nor orphaned: links to it lead to its
//     copy;
//   - each file has one line, and the exit code tells whether something is missing;
//   - what is called orphaned although its source is there, and what is pruned, nothing links;
//   - the same import once more changes nothing.
//
// CORSYNC_PROPERTY_SEEDS is how many seeds are tried, CORSYNC_PROPERTY_SEED the first of them.

#include "ChildRights.h"
#include "ImportChecks.h"
#include "ProcessStart.h"

#include <QtCore/QFile>

#include <algorithm>
#include <optional>

namespace Halvern::Test {

namespace {

/// Starting a program takes long under Wine.
const int DefaultSeeds = QDir::separator() == u'/' ? 24 : 4;

int FromEnvironment(const char* name, int otherwise)
{
    bool isNumber = false;
    const int number = qEnvironmentVariableIntValue(name, &isNumber);
    return isNumber ? number : otherwise;
}

/// While it lives, files cannot be read and the test resolver does not do what it should.
class Obstacles
{
public:
    Obstacles(FileTree& tree, const ImportStep& step)
        : m_tree(tree), m_unreadable(step.unreadable), m_registration(tree.Read(Resolver()))
    {
        SetPermissions({});
        if (step.fault == u"absent"_s)
            tree.Remove(Resolver());
        else if (!step.fault.isEmpty())
            m_orders.emplace(step.fault.toLatin1());
    }
    ~Obstacles()
    {
        // A move may have deleted what could be read by then.
        SetPermissions(QFile::ReadOwner | QFile::WriteOwner);
        if (!m_tree.Exists(Resolver()))
            m_tree.File(Resolver(), m_registration);
    }
    Obstacles(const Obstacles&) = delete;
    Obstacles& operator=(const Obstacles&) = delete;

private:
    static QString Resolver() { return u"plugins/test_resolver.syncplugin"_s; }
    void SetPermissions(QFile::Permissions permissions) const
    {
        for (const QString& file : m_unreadable)
            QFile::setPermissions(m_tree.Path(file), permissions);
    }

    FileTree& m_tree;
    const QStringList m_unreadable;
    const QByteArray m_registration;
    std::optional<PluginOrders> m_orders;
};

class NeverSilentlyWrong : public ScenarioFixture
{
protected:
    /// What is wrong after a history of imports; empty: nothing.
    QStringList Play(quint32 seed)
    {
        RandomWorld world(tree, seed);
        world.MakeSources();
        CopyRecords records;
        for (int round = 0; round < 5; ++round) {
            const ImportStep step = world.NextImport();
            if (round > 0)
                world.Disturb(CopiesOf(records), step);
            tree.Folder(u"work/proj"_s);
            QStringList wrong = PlayStep(world, step, records);
            if (wrong.isEmpty() && world.RetriesNow())
                wrong = Retry(world, records);
            if (!wrong.isEmpty())
                return wrong + QStringList{u"--- what was done:"_s, world.Script()};
        }
        return {};
    }

private:
    /// Permissions hold, also for root.
    ImportReport ReportPoorly(const QStringList& arguments) const
    {
        QProcess process;
        Prepare(process, ImportArguments(arguments + QStringList{u"--json"_s}));
        GiveOrdinaryRights(process);
        StartProcess(process);
        return ReportOf(Finish(process));
    }

    static QStringList CopiesOf(const CopyRecords& records)
    {
        QStringList copies;
        for (const CopyKey& key : records.keys())
            copies.append(key.target);
        return copies;
    }

    /// What a move has deleted may be given to it again.
    bool CanBeGiven(const ImportStep& step, const CopyRecords& records) const
    {
        const QStringList moved = MovedSources(tree, records, step.to).keys();
        return std::all_of(step.sources.begin(), step.sources.end(), [&](const QString& given) {
            const QString source = u"work/"_s + given;
            return tree.Exists(source) ||
                   (step.move && std::any_of(moved.begin(), moved.end(), [&](const QString& file) {
                        return (file + u'/').startsWith(source + u'/');
                    }));
        });
    }

    QStringList PlayStep(RandomWorld& world, const ImportStep& step, CopyRecords& records)
    {
        if (!CanBeGiven(step, records))
            return {};
        const Obstacles obstacles(tree, step);
        ImportChecks checks(tree, step, records);
        const ImportReport promised =
            world.LooksAhead() ? ReportPoorly(step.Arguments() + QStringList{u"--dry-run"_s})
                               : ImportReport();
        QStringList wrong = checks.CheckDryRun();
        Note(world, step);
        const ImportReport first = ReportPoorly(step.Arguments());
        wrong += checks.Check(first);
        wrong += WrongPromises(step, promised, first);
        if (!wrong.isEmpty())
            return wrong + QStringList{::testing::PrintToString(first).c_str()};
        records = checks.Recorded(first);
        if (!CanBeGiven(step, records))
            return {};
        Note(world, step);
        const ImportReport second = ReportPoorly(step.Arguments());
        wrong = checks.CheckSecond(first, second);
        if (!wrong.isEmpty())
            wrong += {::testing::PrintToString(first).c_str(), u"--- second:"_s,
                      ::testing::PrintToString(second).c_str()};
        return wrong;
    }

    /// What a dry run says comes true, but for what goes wrong on the way.
    static QStringList WrongPromises(const ImportStep& step, const ImportReport& promised,
                                     const ImportReport& report)
    {
        QStringList wrong;
        for (const ReportedFile& line : promised.files) {
            const ReportedFile real = report.Of(line.source);
            const bool mayDiffer =
                !step.fault.isEmpty() || real.status == u"failed"_s || line.status == u"orphaned"_s;
            if (!mayDiffer && (real.status != line.status || real.target != line.target))
                wrong.append(u"promised %1 -> %2, but %3 -> %4: %5"_s.arg(
                    line.status, line.target, real.status, real.target, line.source));
        }
        return wrong;
    }

    /// Links inside copies are all that it may change.
    QStringList Retry(RandomWorld& world, CopyRecords& records) const
    {
        world.Note(u"corsync retry"_s);
        const auto before = StampsBelow(tree.Path());
        const CommandResult result = Corsync(u"retry"_s);
        const auto after = StampsBelow(tree.Path());
        QStringList wrong;
        for (auto it = before.begin(); it != before.end(); ++it) {
            const FileStamp now = after.value(it.key());
            const bool isCopy = it.key().startsWith(u"cloud/"_s) && it->kind == "file";
            if (it->kind != "folder" && !IsOurOwn(it.key()) && now != *it &&
                !(isCopy &&
                  WithoutLinks(it.key(), now.content) == WithoutLinks(it.key(), it->content)))
                wrong += {u"retry changed "_s + it.key(), ::testing::PrintToString(result).c_str()};
        }
        for (auto record = records.begin(); record != records.end(); ++record)
            if (record->copy == before.value(record.key().target))
                record->copy = after.value(record.key().target);
        return wrong;
    }

    void Note(RandomWorld& world, const ImportStep& step) const
    {
        QStringList arguments;
        for (const QString& argument : ImportArguments(step.Arguments()))
            arguments.append(u'"' + QString(argument).replace(tree.Path(), u"$TREE"_s) + u'"');
        for (const QString& file : step.unreadable)
            world.Note(u"chmod 0 '"_s + file + u"' # until the import is done"_s);
        if (!step.fault.isEmpty())
            world.Note(u"# the test resolver: "_s + step.fault);
        world.Note(u"(TREE=$PWD; cd work; HOME=$TREE/home corsync "_s + arguments.join(u' ') +
                   u')');
    }
};

} // namespace

TEST_F(NeverSilentlyWrong, WhateverIsImportedOverWhateverIsThere)
{
    const quint32 first = quint32(FromEnvironment("CORSYNC_PROPERTY_SEED", 1));
    const int count =
        FromEnvironment("CORSYNC_PROPERTY_SEEDS",
                        qEnvironmentVariableIsSet("CORSYNC_PROPERTY_SEED") ? 1 : DefaultSeeds);
    const FileTree::Snapshot plugins = tree.Contents(u"plugins"_s);
    for (quint32 seed = first; seed < first + quint32(count) && !HasFailure(); ++seed) {
        for (const QString& name :
             QDir(tree.Path())
                 .entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot))
            tree.Remove(name);
        for (auto it = plugins.begin(); it != plugins.end(); ++it)
            tree.File(u"plugins/"_s + it.key(), it.value());
        const QStringList wrong = Play(seed);
        EXPECT_TRUE(wrong.isEmpty()) << "CORSYNC_PROPERTY_SEED=" << seed << '\n'
                                     << wrong.join(u'\n').toStdString();
    }
}

} // namespace Halvern::Test
