// SPDX-License-Identifier: Apache-2.0

// A plug-in that does not fit this program's contract is refused with a sentence, before any object
// of it is touched.

#include "PluginsFixture.h"

#include <gtest/gtest.h>

namespace {

using namespace Halvern::FileLink;
using namespace Halvern::Test;
using namespace Qt::StringLiterals;
using LoadState = Plugin::LoadState;

class ContractVersion : public PluginsFixture
{
protected:
    /// Registers the plug-in of the zoo for "x", and the test resolver for "tlk".
    void Register(const QString& fault, const QString& version = {})
    {
        module = ZooModule(fault);
        QString text = QString::fromUtf8(Registration(module, u"FileLinkResolver"_s, u"x"_s));
        if (!version.isNull())
            text.replace(u"Module="_s, u"ContractVersion=\"%1\" Module="_s.arg(version));
        WriteRegistration(u"zoo"_s, text.toUtf8());
        RegisterResolver(TestResolverModule(), u"tlk"_s);
        tree.File(u"a.x"_s, "x").File(u"a.tlk"_s, "");
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
            EXPECT_FALSE(Read(u"a.x"_s));
            EXPECT_TRUE(log.Has(u"ERROR "_s + sentence)) << log.Lines().join(u'\n').toStdString();
        }
        EXPECT_FALSE(log.Has(u"INFO Plugin %1 loaded"_s.arg(module)));
        EXPECT_EQ(Find(module).GetLastError(), sentence);
        EXPECT_EQ(Find(module).GetLoadState(), LoadState::Failed);
        EXPECT_FALSE(Find(module).IsLoaded());
        EXPECT_EQ(calls.Calls(), QStringList()) << "nothing of the library was called";
        EXPECT_TRUE(manager.UnloadAllPlugins());
        EXPECT_TRUE(Read(u"a.tlk"_s)) << "the other plug-in";
    }
    void ExpectUsed()
    {
        EXPECT_TRUE(Read(u"a.x"_s));
        EXPECT_EQ(links.size(), 2);
        EXPECT_TRUE(log.Has(u"INFO Plugin %1 loaded"_s.arg(module)));
        EXPECT_TRUE(log.Lines().filter(u"contract"_s).isEmpty());
    }
    QString Sentence(const char* text) const
    {
        return u"Plugin %1 "_s.arg(module) + QString::fromUtf8(text);
    }

    QString module;
    QList<Halvern::SyncPlugin::FileLinkInfo> links;
};

TEST_F(ContractVersion, ALibraryAndAFileThatStateNothingAreTakenForVersionOne)
{
    Register(u"WellBehaved"_s);
    ExpectUsed();
}

TEST_F(ContractVersion, ALibraryThatStatesThisProgramsContractIsUsed)
{
    Register(u"StatedVersion"_s, u"1"_s);
    ExpectUsed();
}

TEST_F(ContractVersion, AnEmptyVersionInTheFileStatesNothing)
{
    Register(u"WellBehaved"_s, u""_s);
    ExpectUsed();
    EXPECT_TRUE(manager.RegistrationProblems().isEmpty());
}

TEST_F(ContractVersion, ALibraryBuiltForAnotherVersionIsRefused)
{
    Register(u"OtherVersion"_s);
    ExpectRefused(Sentence("wants contract version 2, this program has version 1"));
}

TEST_F(ContractVersion, ALibraryBuiltWithRecordsOfAnotherSizeIsRefused)
{
    Register(u"OtherRecordSize"_s);
    ExpectRefused(Sentence("wants contract version 1 (link records of 2084 bytes), this program "
                           "has version 1 (link records of 1044 bytes)"));
}

TEST_F(ContractVersion, ALibraryBuiltByAnotherCompilerIsRefused)
{
    Register(u"OtherCompiler"_s);
    ExpectRefused(Sentence("wants contract version 1 (characters of 4 bytes, objects laid out as "
                           "by Visual C++, the runtime of Visual C++), this program has version 1 "
                           "(characters of 2 bytes, objects laid out as by GCC, libstdc++)"));
}

TEST_F(ContractVersion, ALibraryBuiltByACompilerThatIsNotKnownIsRefused)
{
    Register(u"UnknownCompiler"_s);
    ExpectRefused(Sentence("wants contract version 1 (object layout 9, runtime library 10), this "
                           "program has version 1 (objects laid out as by GCC, libstdc++)"));
}

TEST_F(ContractVersion, ALibraryWhoseAnswerIsNoVersionIsRefused)
{
    Register(u"GarbageVersion"_s);
    ExpectRefused(Sentence("returned 0xdeadbeef in GetSyncPluginContractVersion, which is no "
                           "contract version; this program has version 1"));
}

TEST_F(ContractVersion, ALibraryThatThrowsInsteadOfAnsweringIsRefused)
{
    Register(u"ThrowingVersion"_s);
    ExpectRefused(Sentence("threw an exception in GetSyncPluginContractVersion: a fault of the "
                           "zoo"));
}

TEST_F(ContractVersion, ARegistrationForAnotherVersionIsRefusedBeforeTheLibraryIsLoaded)
{
    Register(u"WellBehaved"_s, u"2"_s);
    manager.AddPluginSearchPaths({tree.Path()});
    ExpectRefused(Sentence("wants contract version 2, this program has version 1"));
    // The file is one that is read, and says what its author means.
    EXPECT_TRUE(manager.RegistrationProblems().isEmpty());
}

TEST_F(ContractVersion, ARegisteredVersionIsRefusedEvenWhereThereIsNoLibrary)
{
    Register(u"NoSuchLibrary"_s, u"3"_s);
    EXPECT_FALSE(Find(module).TryService());
    EXPECT_EQ(log.Lines(),
              QStringList{u"ERROR "_s +
                          Sentence("wants contract version 3, this program has version 1")});
}

TEST_F(ContractVersion, ARegisteredVersionThatIsNoNumberIsRefusedAndAMistake)
{
    Register(u"WellBehaved"_s, u"1.0"_s);
    ExpectRefused(Sentence("wants contract version 1.0, this program has version 1"));
    ASSERT_EQ(manager.RegistrationProblems().size(), 1);
    EXPECT_EQ(manager.RegistrationProblems().first().text,
              u"ContractVersion \"1.0\" is no number from 0 to 4294967295, the "
              "plug-in is refused"_s);
}

} // namespace
