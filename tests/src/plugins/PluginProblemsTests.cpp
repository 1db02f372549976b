// SPDX-License-Identifier: Apache-2.0

// What goes wrong in calls of plug-ins reaches the host as data: each file that needed the plug-in
// gets the reason, with the plug-in's module, and no error is in the log alone.

#include "OverRelease.h"
#include "PluginsFixture.h"

#include "fileset/FileMappingRef.h"
#include "plugins/LinkRecords.h"

#include <gtest/gtest.h>

#include <functional>

namespace {

using namespace Halvern::FileLink;
using namespace Halvern::Test;
using Halvern::SyncPlugin::FileLinkInfo;
using Halvern::SyncServices::FileMapping;

struct CollectingSink : IProblemSink
{
    void Report(const Problem& problem) override { problems.append(problem); }
    QList<Problem> problems;
};

class PluginProblems : public PluginsFixture
{
protected:
    bool Read(const QString& file)
    {
        QList<FileLinkInfo> links;
        FileLinkResolverContext context(CallProblems(&sink, Stage::ExtractFileLinks, file));
        return manager.GetFileLinks(file, links, &context);
    }
    bool Rewrite(const QString& file)
    {
        FileLinkResolverContext context(CallProblems(&sink, Stage::RepathFiles, file));
        return manager.RepathFileLinks(
            file, {MakeFileLinkInfo(QStringLiteral("1"), QStringLiteral("b"))}, &context);
    }
    bool Assign(const QString& file)
    {
        FileLayoutContext context(CallProblems(&sink, Stage::AssignTargetPaths, file));
        return manager.AssignTargetPaths(
            std::make_shared<FileMappingRef>(
                QString(), QString(),
                std::make_shared<FileMapping>(file, QStringLiteral("F:/a"), 1)),
            &context);
    }
    QString File(const char* name)
    {
        const QString path = QString::fromUtf8(name);
        tree.File(path, "x");
        return tree.Path(path);
    }
    /// Problems of one kind about the file, from the plug-in.
    QStringList Texts(ProblemKind kind, const QString& file, const QString& module) const
    {
        QStringList texts;
        for (const Problem& problem : sink.problems)
            if (problem.kind == kind && problem.file == file && problem.plugin == module)
                texts.append(problem.text);
        return texts;
    }
    /// The module's errors without the line that only says that the call failed.
    QStringList LoggedReasons() const
    {
        QStringList reasons;
        for (const QString& line : log.Lines(QStringLiteral("CorsyncFileLink")))
            if (line.startsWith(QStringLiteral("ERROR ")) &&
                !line.startsWith(QStringLiteral("ERROR Failed to get file links")) &&
                !line.startsWith(QStringLiteral("ERROR Failed to repath file links")) &&
                !line.startsWith(QStringLiteral("ERROR Failed to assign target paths")))
                reasons.append(line.mid(6));
        return reasons;
    }
    /// The call fails, and each error of the log is a fault of the plug-in at this file.
    void ExpectFaults(const std::function<bool()>& call, const QString& file, const QString& module,
                      ProblemKind outcome)
    {
        sink.problems.clear();
        log.Clear();
        EXPECT_FALSE(call());
        const QStringList faults = Texts(ProblemKind::PluginFault, file, module);
        EXPECT_FALSE(faults.isEmpty());
        EXPECT_EQ(faults, LoggedReasons());
        EXPECT_EQ(Texts(outcome, file, module).size(), 1);
        EXPECT_EQ(sink.problems.size(), faults.size() + 1) << "and nothing else";
        EXPECT_EQ(sink.problems.last().kind, outcome) << "the outcome comes last";
    }
    /// The same for every service and for two files: a fault is told of each.
    void ExpectFaultsEverywhere(const QString& module)
    {
        SCOPED_TRACE(module.toStdString());
        for (const char* name : {"a.res", "b.res"}) {
            const QString file = File(name);
            ExpectFaults([&] { return Read(file); }, file, module, ProblemKind::LinksNotRead);
            ExpectFaults([&] { return Rewrite(file); }, file, module,
                         ProblemKind::LinksNotRewritten);
        }
    }
    void ExpectLayoutFaults(const QString& module)
    {
        SCOPED_TRACE(module.toStdString());
        for (const char* name : {"a.lay", "b.lay"}) {
            const QString file = File(name);
            ExpectFaults([&] { return Assign(file); }, file, module,
                         ProblemKind::TargetsNotAssigned);
        }
    }

    CollectingSink sink;
};

class PluginProblemsOf : public PluginProblems, public ::testing::WithParamInterface<const char*>
{
protected:
    QString Module() const
    {
        const QString name = QString::fromLatin1(GetParam());
        return name.contains(u'.') ? name : ZooModule(name);
    }
};

TEST_P(PluginProblemsOf, ALibraryWithoutAServiceAreToldOfEachFile)
{
    RegisterResolver(Module(), QStringLiteral("res"));
    ExpectFaultsEverywhere(Module());
}

TEST_P(PluginProblemsOf, ALibraryWithoutALayoutAreToldOfEachFile)
{
    RegisterLayout(Module(), QStringLiteral("lay"));
    ExpectLayoutFaults(Module());
}

INSTANTIATE_TEST_SUITE_P(Zoo, PluginProblemsOf,
                         ::testing::Values("nowhere_to_be_found.so", SYSTEM_LIBRARY, "NullFactory",
                                           "NullObject", "ThrowingFactory", "ThrowingCreation",
                                           "OtherVersion", "OtherRecordSize", "GarbageVersion",
                                           "ThrowingVersion", "CallThrows", "CallThrowsAnInt"));

TEST_F(PluginProblems, OfAnImpossibleAnswerAreToldOfEachFile)
{
    for (const char* fault : {"CountWithoutArray", "NegativeCount", "NegativeCountWithArray"}) {
        SCOPED_TRACE(fault);
        PluginManager fresh;
        fresh.AddPluginSearchPaths({ZooFolder()});
        const QString module = ZooModule(QString::fromLatin1(fault));
        const QString registration = QStringLiteral("one.syncplugin");
        tree.File(registration,
                  Registration(module, QStringLiteral("FileLinkResolver"), QStringLiteral("res")));
        ASSERT_TRUE(fresh.LoadRegistrationFile(tree.Path(registration)));
        for (const char* name : {"a.res", "b.res"}) {
            const QString file = File(name);
            sink.problems.clear();
            QList<FileLinkInfo> links;
            FileLinkResolverContext context(CallProblems(&sink, Stage::ExtractFileLinks, file));
            EXPECT_FALSE(fresh.GetFileLinks(file, links, &context));
            const QStringList faults = Texts(ProblemKind::PluginFault, file, module);
            ASSERT_EQ(faults.size(), 1);
            EXPECT_TRUE(faults.first().startsWith(
                QStringLiteral("Plugin %1 returned a count of ").arg(module)));
            EXPECT_EQ(sink.problems.last().kind, ProblemKind::LinksNotRead);
        }
    }
}

TEST_F(PluginProblems, OfALibraryThatIsNotFoundHoldTheSystemsReason)
{
    const QString module = QStringLiteral("nowhere_to_be_found.so");
    QLibrary reference(module);
    ASSERT_FALSE(reference.load());
    RegisterResolver(module, QStringLiteral("res"));
    const QString file = File("a.res");
    EXPECT_FALSE(Read(file));
    EXPECT_EQ(Texts(ProblemKind::PluginFault, file, module),
              QStringList{QStringLiteral("Failed to load plugin %1. Error %2.")
                              .arg(module, reference.errorString())});
}

TEST_F(PluginProblems, OfAnObjectThatIsMissingAndALibraryThatStaysAreBothTold)
{
    const QString module = QStringLiteral(SYSTEM_LIBRARY);
    RegisterResolver(module, QStringLiteral("res"));
    ASSERT_TRUE(Find(module).LoadModule());
    OverRelease(module);
    const QString file = File("a.res");
    ExpectFaults([&] { return Read(file); }, file, module, ProblemKind::LinksNotRead);
    const QStringList faults = Texts(ProblemKind::PluginFault, file, module);
    ASSERT_EQ(faults.size(), 2);
    EXPECT_TRUE(faults.last().startsWith(QStringLiteral("Failed to unload plugin ")));
    EXPECT_EQ(Find(module).GetLastError(), faults.join(QStringLiteral("; ")));
}

TEST_F(PluginProblems, OfAMissingFactoryAreToldEvenWhenAnEarlierObjectServes)
{
    const QString module = ZooModule(QStringLiteral("NullFactoryTheSecondTime"));
    RegisterResolver(module, QStringLiteral("res"));
    const QString file = File("a.res");
    EXPECT_TRUE(Read(file));
    EXPECT_TRUE(sink.problems.isEmpty());
    EXPECT_TRUE(Read(file));
    EXPECT_EQ(Texts(ProblemKind::PluginFault, file, module).size(), 1);
    EXPECT_EQ(sink.problems.size(), 1) << "the links were read";
}

TEST_F(PluginProblems, OfAFailedLayoutAreToldThoughAnotherOneServes)
{
    const QString module = ZooModule(QStringLiteral("OtherVersion"));
    RegisterLayout(module, QStringLiteral("tasm"));
    RegisterLayout(TestLayoutModule(), QStringLiteral("tasm"));
    const QString file = File("a.tasm");
    EXPECT_TRUE(Assign(file));
    EXPECT_EQ(Texts(ProblemKind::PluginFault, file, module).size(), 1);
    EXPECT_EQ(sink.problems.size(), 1);
}

TEST_F(PluginProblems, AreNoneWhereNothingGoesWrong)
{
    RegisterResolver(ZooModule(QStringLiteral("StatedVersion")), QStringLiteral("res"));
    const QString file = File("a.res");
    EXPECT_TRUE(Read(file));
    EXPECT_TRUE(Rewrite(file));
    EXPECT_TRUE(Read(File("a.unknown")));
    EXPECT_TRUE(sink.problems.isEmpty());
}

TEST_F(PluginProblems, OfAFileThatIsGoneNameNoPlugin)
{
    const QString file = tree.Path(QStringLiteral("gone.res"));
    RegisterResolver(ZooModule(QStringLiteral("StatedVersion")), QStringLiteral("res"));
    EXPECT_FALSE(Read(file));
    EXPECT_EQ(Texts(ProblemKind::FileMissing, file, QString()).size(), 1);
    EXPECT_FALSE(Rewrite(file));
    EXPECT_EQ(Texts(ProblemKind::FileMissing, file, QString()).size(), 2);
}

} // namespace
