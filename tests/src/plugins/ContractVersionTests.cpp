// SPDX-License-Identifier: Apache-2.0

// A plug-in that does not fit this program's contract is refused with a sentence, before any object
// of it is touched.

#include "PluginsFixture.h"

#include <gtest/gtest.h>

namespace {

using namespace Halvern::FileLink;
using namespace Halvern::Test;
using LoadState = Plugin::LoadState;

class ContractVersion : public PluginsFixture
{
protected:
    /// Registers the plug-in of the zoo for "x", and the test resolver for "tlk".
    void Register(const QString& fault, const QString& version = {})
    {
        module = ZooModule(fault);
        QString text = QString::fromUtf8(
            Registration(module, QStringLiteral("FileLinkResolver"), QStringLiteral("x")));
        if (!version.isNull())
            text.replace(QStringLiteral("Module="),
                         QStringLiteral("ContractVersion=\"%1\" Module=").arg(version));
        WriteRegistration(QStringLiteral("zoo"), text.toUtf8());
        RegisterResolver(TestResolverModule(), QStringLiteral("tlk"));
        tree.File(QStringLiteral("a.x"), "x").File(QStringLiteral("a.tlk"), "");
        manager.EnsureRegistered();
        log.Clear();
    }
    bool Read(const QString& name)
    {
        links.clear();
        FileLinkResolverContext context;
        return manager.GetFileLinks(tree.Path(name), links, &context);
    }
    /// The plug-in is refused with this sentence at every file that needs it; the other plug-in
    /// goes on.
    void ExpectRefused(const QString& sentence)
    {
        for (int file = 0; file < 2; ++file) {
            log.Clear();
            EXPECT_FALSE(Read(QStringLiteral("a.x")));
            EXPECT_TRUE(log.Has(QStringLiteral("ERROR ") + sentence))
                << log.Lines().join(u'\n').toStdString();
        }
        EXPECT_FALSE(log.Has(QStringLiteral("INFO Plugin %1 loaded").arg(module)));
        EXPECT_EQ(Find(module).GetLastError(), sentence);
        EXPECT_EQ(Find(module).GetLoadState(), LoadState::Failed);
        EXPECT_FALSE(Find(module).IsLoaded());
        EXPECT_EQ(calls.Calls(), QStringList()) << "nothing of the library was called";
        EXPECT_TRUE(manager.UnloadAllPlugins());
        EXPECT_TRUE(Read(QStringLiteral("a.tlk"))) << "the other plug-in";
    }
    void ExpectUsed()
    {
        EXPECT_TRUE(Read(QStringLiteral("a.x")));
        EXPECT_EQ(links.size(), 2);
        EXPECT_TRUE(log.Has(QStringLiteral("INFO Plugin %1 loaded").arg(module)));
        EXPECT_TRUE(log.Lines().filter(QStringLiteral("contract")).isEmpty());
    }
    QString Sentence(const char* text) const
    {
        return QStringLiteral("Plugin %1 ").arg(module) + QString::fromUtf8(text);
    }

    QString module;
    QList<Halvern::SyncPlugin::FileLinkInfo> links;
};

TEST_F(ContractVersion, ALibraryAndAFileThatStateNothingAreTakenForVersionOne)
{
    Register(QStringLiteral("WellBehaved"));
    ExpectUsed();
}

TEST_F(ContractVersion, ALibraryThatStatesThisProgramsContractIsUsed)
{
    Register(QStringLiteral("StatedVersion"), QStringLiteral("1"));
    ExpectUsed();
}

TEST_F(ContractVersion, AnEmptyVersionInTheFileStatesNothing)
{
    Register(QStringLiteral("WellBehaved"), QStringLiteral(""));
    ExpectUsed();
    EXPECT_TRUE(manager.RegistrationProblems().isEmpty());
}

TEST_F(ContractVersion, ALibraryBuiltForAnotherVersionIsRefused)
{
    Register(QStringLiteral("OtherVersion"));
    ExpectRefused(Sentence("wants contract version 2, this program has version 1"));
}

TEST_F(ContractVersion, ALibraryBuiltWithRecordsOfAnotherSizeIsRefused)
{
    Register(QStringLiteral("OtherRecordSize"));
    ExpectRefused(Sentence("wants contract version 1 (link records of 2084 bytes), this program "
                           "has version 1 (link records of 1044 bytes)"));
}

TEST_F(ContractVersion, ALibraryBuiltByAnotherCompilerIsRefused)
{
    Register(QStringLiteral("OtherCompiler"));
    ExpectRefused(Sentence("wants contract version 1 (characters of 4 bytes, objects laid out as "
                           "by Visual C++, the runtime of Visual C++), this program has version 1 "
                           "(characters of 2 bytes, objects laid out as by GCC, libstdc++)"));
}

TEST_F(ContractVersion, ALibraryBuiltByACompilerThatIsNotKnownIsRefused)
{
    Register(QStringLiteral("UnknownCompiler"));
    ExpectRefused(Sentence("wants contract version 1 (object layout 9, runtime library 10), this "
                           "program has version 1 (objects laid out as by GCC, libstdc++)"));
}

TEST_F(ContractVersion, ALibraryWhoseAnswerIsNoVersionIsRefused)
{
    Register(QStringLiteral("GarbageVersion"));
    ExpectRefused(Sentence("returned 0xdeadbeef in GetSyncPluginContractVersion, which is no "
                           "contract version; this program has version 1"));
}

TEST_F(ContractVersion, ALibraryThatThrowsInsteadOfAnsweringIsRefused)
{
    Register(QStringLiteral("ThrowingVersion"));
    ExpectRefused(Sentence("threw an exception in GetSyncPluginContractVersion: a fault of the "
                           "zoo"));
}

TEST_F(ContractVersion, ARegistrationForAnotherVersionIsRefusedBeforeTheLibraryIsLoaded)
{
    Register(QStringLiteral("WellBehaved"), QStringLiteral("2"));
    manager.AddPluginSearchPaths({tree.Path()});
    ExpectRefused(Sentence("wants contract version 2, this program has version 1"));
    // The file is one that is read, and says what its author means.
    EXPECT_TRUE(manager.RegistrationProblems().isEmpty());
}

TEST_F(ContractVersion, ARegisteredVersionIsRefusedEvenWhereThereIsNoLibrary)
{
    Register(QStringLiteral("NoSuchLibrary"), QStringLiteral("3"));
    EXPECT_FALSE(Find(module).TryService());
    EXPECT_EQ(log.Lines(),
              QStringList{QStringLiteral("ERROR ") +
                          Sentence("wants contract version 3, this program has version 1")});
}

TEST_F(ContractVersion, ARegisteredVersionThatIsNoNumberIsRefusedAndAMistake)
{
    Register(QStringLiteral("WellBehaved"), QStringLiteral("1.0"));
    ExpectRefused(Sentence("wants contract version 1.0, this program has version 1"));
    ASSERT_EQ(manager.RegistrationProblems().size(), 1);
    EXPECT_EQ(manager.RegistrationProblems().first().text,
              QStringLiteral("ContractVersion \"1.0\" is no number from 0 to 4294967295, the "
                             "plug-in is refused"));
}

} // namespace
