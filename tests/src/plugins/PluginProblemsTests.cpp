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
using namespace Qt::StringLiterals;
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
        return manager.RepathFileLinks(file, {MakeFileLinkInfo(u"1"_s, u"b"_s)}, &context);
    }
    bool Assign(const QString& file)
    {
        FileLayoutContext context(CallProblems(&sink, Stage::AssignTargetPaths, file));
        return manager.AssignTargetPaths(
            std::make_shared<FileMappingRef>(QString(), QString(),
                                             std::make_shared<FileMapping>(file, u"F:/a"_s, 1)),
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
        for (const QString& line : log.Lines(u"CorsyncFileLink"_s))
            if (line.startsWith(u"ERROR "_s) &&
                !line.startsWith(u"ERROR Failed to get file links"_s) &&
                !line.startsWith(u"ERROR Failed to repath file links"_s) &&
                !line.startsWith(u"ERROR Failed to assign target paths"_s))
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
    RegisterResolver(Module(), u"res"_s);
    ExpectFaultsEverywhere(Module());
}

TEST_P(PluginProblemsOf, ALibraryWithoutALayoutAreToldOfEachFile)
{
    RegisterLayout(Module(), u"lay"_s);
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
        const QString registration = u"one.syncplugin"_s;
        tree.File(registration, Registration(module, u"FileLinkResolver"_s, u"res"_s));
        ASSERT_TRUE(fresh.LoadRegistrationFile(tree.Path(registration)));
        for (const char* name : {"a.res", "b.res"}) {
            const QString file = File(name);
            sink.problems.clear();
            QList<FileLinkInfo> links;
            FileLinkResolverContext context(CallProblems(&sink, Stage::ExtractFileLinks, file));
            EXPECT_FALSE(fresh.GetFileLinks(file, links, &context));
            const QStringList faults = Texts(ProblemKind::PluginFault, file, module);
            ASSERT_EQ(faults.size(), 1);
            EXPECT_TRUE(faults.first().startsWith(u"Plugin %1 returned a count of "_s.arg(module)));
            EXPECT_EQ(sink.problems.last().kind, ProblemKind::LinksNotRead);
        }
    }
}

TEST_F(PluginProblems, OfALibraryThatIsNotFoundHoldTheSystemsReason)
{
    const QString module = u"nowhere_to_be_found.so"_s;
    QLibrary reference(module);
    ASSERT_FALSE(reference.load());
    RegisterResolver(module, u"res"_s);
    const QString file = File("a.res");
    EXPECT_FALSE(Read(file));
    EXPECT_EQ(
        Texts(ProblemKind::PluginFault, file, module),
        QStringList{u"Failed to load plugin %1. Error %2."_s.arg(module, reference.errorString())});
}

TEST_F(PluginProblems, OfALibraryThatCannotBeLoadedHoldTheSystemsReasonAtEachFile)
{
    const QString module = u"broken.so"_s;
    tree.File(u"lib/"_s + module, "no library");
    manager.AddPluginSearchPaths({tree.Path(u"lib"_s)});
    QLibrary reference(tree.Path(u"lib/"_s + module));
    ASSERT_FALSE(reference.load());
    RegisterResolver(module, u"res"_s);
    for (const char* name : {"a.res", "b.res"}) {
        const QString file = File(name);
        EXPECT_FALSE(Read(file));
        EXPECT_EQ(Texts(ProblemKind::PluginFault, file, module),
                  QStringList{u"Failed to load plugin %1. Error %2."_s.arg(
                      module, reference.errorString())});
    }
}

TEST_F(PluginProblems, OfAnObjectThatIsMissingAndALibraryThatStaysAreBothTold)
{
    const QString module = QStringLiteral(SYSTEM_LIBRARY);
    RegisterResolver(module, u"res"_s);
    ASSERT_TRUE(Find(module).LoadModule());
    OverRelease(module);
    const QString file = File("a.res");
    ExpectFaults([&] { return Read(file); }, file, module, ProblemKind::LinksNotRead);
    const QStringList faults = Texts(ProblemKind::PluginFault, file, module);
    ASSERT_EQ(faults.size(), 2);
    EXPECT_TRUE(faults.last().startsWith(u"Failed to unload plugin "_s));
    EXPECT_EQ(Find(module).GetLastError(), faults.join(u"; "_s));
}

TEST_F(PluginProblems, OfAMissingFactoryAreToldEvenWhenAnEarlierObjectServes)
{
    const QString module = ZooModule(u"NullFactoryTheSecondTime"_s);
    RegisterResolver(module, u"res"_s);
    const QString file = File("a.res");
    EXPECT_TRUE(Read(file));
    EXPECT_TRUE(sink.problems.isEmpty());
    EXPECT_TRUE(Read(file));
    EXPECT_EQ(Texts(ProblemKind::PluginFault, file, module).size(), 1);
    EXPECT_EQ(sink.problems.size(), 1) << "the links were read";
}

TEST_F(PluginProblems, OfAFailedLayoutAreToldThoughAnotherOneServes)
{
    const QString module = ZooModule(u"OtherVersion"_s);
    RegisterLayout(module, u"tasm"_s);
    RegisterLayout(TestLayoutModule(), u"tasm"_s);
    const QString file = File("a.tasm");
    EXPECT_TRUE(Assign(file));
    EXPECT_EQ(Texts(ProblemKind::PluginFault, file, module).size(), 1);
    EXPECT_EQ(sink.problems.size(), 1);
}

TEST_F(PluginProblems, AreNoneWhereNothingGoesWrong)
{
    RegisterResolver(ZooModule(u"StatedVersion"_s), u"res"_s);
    const QString file = File("a.res");
    EXPECT_TRUE(Read(file));
    EXPECT_TRUE(Rewrite(file));
    EXPECT_TRUE(Read(File("a.unknown")));
    EXPECT_TRUE(sink.problems.isEmpty());
}

TEST_F(PluginProblems, OfAFileThatIsGoneNameNoPlugin)
{
    const QString file = tree.Path(u"gone.res"_s);
    RegisterResolver(ZooModule(u"StatedVersion"_s), u"res"_s);
    EXPECT_FALSE(Read(file));
    EXPECT_EQ(Texts(ProblemKind::FileMissing, file, QString()).size(), 1);
    EXPECT_FALSE(Rewrite(file));
    EXPECT_EQ(Texts(ProblemKind::FileMissing, file, QString()).size(), 2);
}

} // namespace
