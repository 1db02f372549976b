// SPDX-License-Identifier: Apache-2.0

#include "PluginsFixture.h"

#include "plugins/LinkRecords.h"

#include <gtest/gtest.h>

namespace {

using namespace Halvern::FileLink;
using namespace Halvern::Test;
using namespace Qt::StringLiterals;
using Halvern::SyncPlugin::FileLinkInfo;

class PluginCalls : public PluginsFixture
{
protected:
    /// A file that the named plug-in of the zoo serves.
    QString ZooFile(const char* fault)
    {
        module = ZooModule(QString::fromLatin1(fault));
        RegisterResolver(module, u"zoo"_s);
        tree.File(u"a.zoo"_s);
        manager.FindPluginForFile(u"a.zoo"_s, PluginType::FileLinkResolver);
        log.Clear();
        return tree.Path(u"a.zoo"_s);
    }
    /// A file of the text format with its plug-in registered.
    QString TextFile(const QByteArray& content)
    {
        RegisterResolver(TestResolverModule(), u"tlk"_s);
        tree.File(u"a.tlk"_s, content);
        manager.FindPluginForFile(u"a.tlk"_s, PluginType::FileLinkResolver);
        log.Clear();
        return tree.Path(u"a.tlk"_s);
    }
    bool Get(const QString& file) { return manager.GetFileLinks(file, links, &context); }
    bool Repath(const QString& file, const QList<FileLinkInfo>& to)
    {
        return manager.RepathFileLinks(file, to, &context);
    }
    /// The links as "id=path".
    QStringList Links() const
    {
        QStringList texts;
        for (const FileLinkInfo& link : links)
            texts.append(GetReferenceId(link) + u'=' + GetLinkPath(link));
        return texts;
    }
    /// The module's lines without those about loading.
    QStringList Errors() const
    {
        QStringList lines = log.Lines(u"CorsyncFileLink"_s);
        lines.removeIf([](const QString& line) { return line.startsWith(u"INFO"_s); });
        return lines;
    }
    QString GetFailure(const QString& file) const
    {
        return u"ERROR Failed to get file links from file %1"_s.arg(file);
    }
    QString RepathFailure(const QString& file) const
    {
        return u"ERROR Failed to repath file links in file %1. Plugin returned false."_s.arg(file);
    }
    static FileLinkInfo Link(const char* id, const char* path)
    {
        return MakeFileLinkInfo(QString::fromUtf8(id), QString::fromUtf8(path));
    }

    QString module;
    QList<FileLinkInfo> links;
    FileLinkResolverContext context;
};

TEST_F(PluginCalls, LinksAreAppendedInTheOrderOfThePlugin)
{
    links.append(Link("0", "earlier"));
    const QString file = TextFile("link 2 lib/b.tlk\nnoise\nlink x ../\xc3\xbc c.tlk\n");
    EXPECT_TRUE(Get(file));
    EXPECT_EQ(Links(), (QStringList{u"0=earlier"_s, u"2=lib/b.tlk"_s, u"x=../ü c.tlk"_s}));
    EXPECT_EQ(links.last().size, 1044u);
    EXPECT_EQ(calls.Calls(), QStringList{u"GetFileLinks "_s + file});
    EXPECT_EQ(Errors(), QStringList());
}

TEST_F(PluginCalls, AMissingFileIsAFailureThatAsksNoPlugin)
{
    TextFile({});
    const QString file = tree.Path(u"none.tlk"_s);
    EXPECT_FALSE(Get(file));
    EXPECT_EQ(
        log.Lines(),
        QStringList{u"ERROR Failed to get file links from file %1. File not found."_s.arg(file)});
    EXPECT_EQ(log.Records().first().file, u"PluginManager.cpp"_s);
    EXPECT_TRUE(log.Records().first().function.contains(u"PluginManager::GetFileLinks("_s));
    log.Clear();
    EXPECT_FALSE(Repath(file, {Link("1", "b")}));
    EXPECT_EQ(
        log.Lines(),
        QStringList{u"ERROR Failed to repath file links in file %1. File not found."_s.arg(file)});
    EXPECT_EQ(calls.Calls(), QStringList());
}

TEST_F(PluginCalls, AFileThatNoPluginServesHasNoLinksAndNeedsNoRepathing)
{
    TextFile({});
    const QString file = tree.File(u"a.txt"_s, "link 1 b").Path(u"a.txt"_s);
    EXPECT_TRUE(Get(file));
    EXPECT_EQ(Links(), QStringList());
    EXPECT_TRUE(Repath(file, {Link("1", "c")}));
    EXPECT_EQ(tree.Read(u"a.txt"_s), "link 1 b");
}

TEST_F(PluginCalls, OnlyTheFirstPluginIsAsked)
{
    const QString file = TextFile("fail\n");
    RegisterResolver(ZooModule(u"WellBehaved"_s), u"*"_s);
    EXPECT_FALSE(Get(file));
    EXPECT_EQ(calls.Calls(), QStringList{u"GetFileLinks "_s + file});
}

TEST_F(PluginCalls, ACatchAllServesWhatNoOtherDoes)
{
    RegisterResolver(TestResolverModule(), u"*"_s);
    tree.File(u"README"_s, "link 1 b.tlk");
    EXPECT_TRUE(Get(tree.Path(u"README"_s)));
    EXPECT_EQ(Links(), QStringList{u"1=b.tlk"_s});
}

TEST_F(PluginCalls, APluginThatReturnsFalseIsLoggedWithItsOwnReasonUnderItsOwnName)
{
    const QString file = TextFile("link 1 b\nfail\n");
    EXPECT_FALSE(Get(file));
    EXPECT_EQ(Links(), QStringList());
    EXPECT_EQ(Errors(), QStringList{GetFailure(file)});
    EXPECT_EQ(log.Lines(u"ResolverPlugin"_s), QStringList{u"ERROR test resolver: told to fail"_s});
}

TEST_F(PluginCalls, APluginWhoseLibraryIsMissingFailsWithoutAFurtherLine)
{
    RegisterResolver(u"nowhere.so"_s, u"tlk"_s);
    const QString file = tree.File(u"a.tlk"_s).Path(u"a.tlk"_s);
    EXPECT_FALSE(Get(file));
    EXPECT_FALSE(Repath(file, {Link("1", "b")}));
    const QStringList errors = log.Lines().filter(u"ERROR"_s);
    ASSERT_EQ(errors.size(), 2);
    for (const QString& error : errors)
        EXPECT_TRUE(error.startsWith(u"ERROR Failed to load plugin nowhere.so."_s));
}

TEST_F(PluginCalls, RepathingRewritesTheLinksGivenAndNoOtherByte)
{
    const QString file =
        TextFile("head\r\nlink 1 old.tlk\r\nlink 2 same.tlk\nlink 3 same.tlk\ntail");
    EXPECT_TRUE(Repath(file, {Link("3", "new/c.tlk"), Link("1", "a.tlk")}));
    EXPECT_EQ(tree.Read(u"a.tlk"_s),
              "head\r\nlink 1 a.tlk\r\nlink 2 same.tlk\nlink 3 new/c.tlk\ntail");
    EXPECT_EQ(calls.Calls(),
              QStringList{u"RepathFileLinks %1 [3=new/c.tlk] [1=a.tlk]"_s.arg(file)});
    EXPECT_EQ(Errors(), QStringList());
}

TEST_F(PluginCalls, APathOf300CharactersReachesThePluginAsItsFirst259)
{
    const QString file = TextFile("link 1 old.tlk\n");
    const QString path = QString(250, u'a') + QString(50, u'b');
    EXPECT_TRUE(Repath(file, {MakeFileLinkInfo(u"1"_s, path)}));
    EXPECT_EQ(calls.Calls(), QStringList{u"RepathFileLinks %1 [1=%2]"_s.arg(file, path.left(259))});
}

TEST_F(PluginCalls, RepathingNoLinksSucceedsEvenForAMissingFile)
{
    EXPECT_TRUE(Repath(tree.Path(u"none.tlk"_s), {}));
    EXPECT_EQ(log.Lines(), QStringList());
}

TEST_F(PluginCalls, ARepathThatReturnsFalseIsLogged)
{
    const QString file = TextFile("link 1 b\nnorepath\n");
    EXPECT_FALSE(Repath(file, {Link("1", "c")}));
    EXPECT_EQ(Errors(), QStringList{RepathFailure(file)});
    EXPECT_TRUE(log.Records().last().function.contains(u"PluginManager::RepathFileLinks("_s));
    EXPECT_EQ(tree.Read(u"a.tlk"_s), "link 1 b\nnorepath\n");
}

TEST_F(PluginCalls, AnExceptionBecomesAFailureThatNamesTheModule)
{
    const QString file = ZooFile("CallThrows");
    EXPECT_FALSE(Get(file));
    EXPECT_EQ(Errors(), (QStringList{u"ERROR Plugin %1 threw an exception in "
                                     "GetFileLinks: a fault of the zoo"_s.arg(module),
                                     GetFailure(file)}));
    log.Clear();
    EXPECT_FALSE(Repath(file, {Link("1", "b")}));
    EXPECT_EQ(Errors(), (QStringList{u"ERROR Plugin %1 threw an exception in "
                                     "RepathFileLinks: a fault of the zoo"_s.arg(module),
                                     RepathFailure(file)}));
}

TEST_F(PluginCalls, AnythingThrownBecomesAFailure)
{
    const QString file = ZooFile("CallThrowsAnInt");
    EXPECT_FALSE(Get(file));
    EXPECT_EQ(Errors(), (QStringList{u"ERROR Plugin %1 threw an exception in "
                                     "GetFileLinks: unknown exception"_s.arg(module),
                                     GetFailure(file)}));
}

TEST_F(PluginCalls, ACallThatReturnsFalseFreesNothingAndFails)
{
    const QString file = ZooFile("CallReturnsFalse");
    EXPECT_FALSE(Get(file));
    EXPECT_FALSE(Repath(file, {Link("1", "b")}));
    EXPECT_EQ(Errors(), (QStringList{GetFailure(file), RepathFailure(file)}));
}

TEST_F(PluginCalls, ACountOfZeroYieldsNoLinksAndNoErrorWithOrWithoutAnArray)
{
    // The array is freed: the leak checker of the sanitizer build watches it.
    EXPECT_TRUE(Get(ZooFile("ZeroCountWithArray")));
    EXPECT_EQ(Links(), QStringList());
    EXPECT_EQ(Errors(), QStringList());
    EXPECT_TRUE(Get(TextFile("no links\n")));
    EXPECT_EQ(Links(), QStringList());
    EXPECT_EQ(Errors(), QStringList());
}

TEST_F(PluginCalls, AnArrayThatCannotBeIsThePluginsFailure)
{
    struct Row
    {
        const char* fault;
        const char* line;
    };
    const Row rows[] = {
        {"CountWithoutArray",
         "ERROR Plugin %1 returned a count of 2 with no array in GetFileLinks"},
        {"NegativeCount", "ERROR Plugin %1 returned a count of -3 with no array in GetFileLinks"},
        {"NegativeCountWithArray",
         "ERROR Plugin %1 returned a count of -3 with an array in GetFileLinks"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.fault);
        const QString name = ZooModule(QString::fromLatin1(row.fault));
        PluginManager own;
        own.AddPluginSearchPaths({ZooFolder()});
        tree.File(u"own/a.syncplugin"_s, Registration(name, u"FileLinkResolver"_s, u"zoo"_s));
        own.AddRegistrationFolders({tree.Path(u"own"_s)});
        const QString file = tree.File(u"a.zoo"_s).Path(u"a.zoo"_s);
        EXPECT_FALSE(own.GetFileLinks(file, links, &context));
        EXPECT_EQ(Links(), QStringList());
        EXPECT_TRUE(log.Has(QString::fromLatin1(row.line).arg(name)));
        EXPECT_TRUE(log.Has(GetFailure(file)));
        log.Clear();
    }
}

TEST_F(PluginCalls, TextsWithoutATerminatingZeroAreBounded)
{
    EXPECT_TRUE(Get(ZooFile("UnterminatedTexts")));
    const QString link = QString(259, u'r') + u'=' + QString(259, u'p');
    EXPECT_EQ(Links(), (QStringList{link, link}));
    EXPECT_EQ(links.first().path[259], Halvern::SyncPlugin::WideChar(0));
    EXPECT_EQ(links.first().referenceId[259], Halvern::SyncPlugin::WideChar(0));
}

} // namespace
