// SPDX-License-Identifier: Apache-2.0

#include "PluginsFixture.h"

#include "plugins/LinkRecords.h"

#include <gtest/gtest.h>

namespace {

using namespace Halvern::FileLink;
using namespace Halvern::Test;
using Halvern::SyncPlugin::FileLinkInfo;

class PluginCalls : public PluginsFixture
{
protected:
    /// A file that the named plug-in of the zoo serves.
    QString ZooFile(const char* fault)
    {
        module = ZooModule(QString::fromLatin1(fault));
        RegisterResolver(module, QStringLiteral("zoo"));
        tree.File(QStringLiteral("a.zoo"));
        manager.FindPluginForFile(QStringLiteral("a.zoo"), PluginType::FileLinkResolver);
        log.Clear();
        return tree.Path(QStringLiteral("a.zoo"));
    }
    /// A file of the text format with its plug-in registered.
    QString TextFile(const QByteArray& content)
    {
        RegisterResolver(TestResolverModule(), QStringLiteral("tlk"));
        tree.File(QStringLiteral("a.tlk"), content);
        manager.FindPluginForFile(QStringLiteral("a.tlk"), PluginType::FileLinkResolver);
        log.Clear();
        return tree.Path(QStringLiteral("a.tlk"));
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
        QStringList lines = log.Lines(QStringLiteral("CorsyncFileLink"));
        lines.removeIf([](const QString& line) { return line.startsWith(QStringLiteral("INFO")); });
        return lines;
    }
    QString GetFailure(const QString& file) const
    {
        return QStringLiteral("ERROR Failed to get file links from file %1").arg(file);
    }
    QString RepathFailure(const QString& file) const
    {
        return QStringLiteral(
                   "ERROR Failed to repath file links in file %1. Plugin returned false.")
            .arg(file);
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
    EXPECT_EQ(Links(), (QStringList{QStringLiteral("0=earlier"), QStringLiteral("2=lib/b.tlk"),
                                    QString::fromUtf8("x=../ü c.tlk")}));
    EXPECT_EQ(links.last().size, 1044u);
    EXPECT_EQ(calls.Calls(), QStringList{QStringLiteral("GetFileLinks ") + file});
    EXPECT_EQ(Errors(), QStringList());
}

TEST_F(PluginCalls, AMissingFileIsAFailureThatAsksNoPlugin)
{
    TextFile({});
    const QString file = tree.Path(QStringLiteral("none.tlk"));
    EXPECT_FALSE(Get(file));
    EXPECT_EQ(
        log.Lines(),
        QStringList{QStringLiteral("ERROR Failed to get file links from file %1. File not found.")
                        .arg(file)});
    EXPECT_EQ(log.Records().first().file, QStringLiteral("PluginManager.cpp"));
    EXPECT_TRUE(
        log.Records().first().function.contains(QStringLiteral("PluginManager::GetFileLinks(")));
    log.Clear();
    EXPECT_FALSE(Repath(file, {Link("1", "b")}));
    EXPECT_EQ(
        log.Lines(),
        QStringList{QStringLiteral("ERROR Failed to repath file links in file %1. File not found.")
                        .arg(file)});
    EXPECT_EQ(calls.Calls(), QStringList());
}

TEST_F(PluginCalls, AFileThatNoPluginServesHasNoLinksAndNeedsNoRepathing)
{
    TextFile({});
    const QString file =
        tree.File(QStringLiteral("a.txt"), "link 1 b").Path(QStringLiteral("a.txt"));
    EXPECT_TRUE(Get(file));
    EXPECT_EQ(Links(), QStringList());
    EXPECT_TRUE(Repath(file, {Link("1", "c")}));
    EXPECT_EQ(tree.Read(QStringLiteral("a.txt")), "link 1 b");
}

TEST_F(PluginCalls, OnlyTheFirstPluginIsAsked)
{
    const QString file = TextFile("fail\n");
    RegisterResolver(ZooModule(QStringLiteral("WellBehaved")), QStringLiteral("*"));
    EXPECT_FALSE(Get(file));
    EXPECT_EQ(calls.Calls(), QStringList{QStringLiteral("GetFileLinks ") + file});
}

TEST_F(PluginCalls, ACatchAllServesWhatNoOtherDoes)
{
    RegisterResolver(TestResolverModule(), QStringLiteral("*"));
    tree.File(QStringLiteral("README"), "link 1 b.tlk");
    EXPECT_TRUE(Get(tree.Path(QStringLiteral("README"))));
    EXPECT_EQ(Links(), QStringList{QStringLiteral("1=b.tlk")});
}

TEST_F(PluginCalls, APluginThatReturnsFalseIsLoggedWithItsOwnReasonUnderItsOwnName)
{
    const QString file = TextFile("link 1 b\nfail\n");
    EXPECT_FALSE(Get(file));
    EXPECT_EQ(Links(), QStringList());
    EXPECT_EQ(Errors(), QStringList{GetFailure(file)});
    EXPECT_EQ(log.Lines(QStringLiteral("ResolverPlugin")),
              QStringList{QStringLiteral("ERROR test resolver: told to fail")});
}

TEST_F(PluginCalls, APluginWhoseLibraryIsMissingFailsWithoutAFurtherLine)
{
    RegisterResolver(QStringLiteral("nowhere.so"), QStringLiteral("tlk"));
    const QString file = tree.File(QStringLiteral("a.tlk")).Path(QStringLiteral("a.tlk"));
    EXPECT_FALSE(Get(file));
    EXPECT_FALSE(Repath(file, {Link("1", "b")}));
    const QStringList errors = log.Lines().filter(QStringLiteral("ERROR"));
    ASSERT_EQ(errors.size(), 2);
    for (const QString& error : errors)
        EXPECT_TRUE(error.startsWith(QStringLiteral("ERROR Failed to load plugin nowhere.so.")));
}

TEST_F(PluginCalls, RepathingRewritesTheLinksGivenAndNoOtherByte)
{
    const QString file =
        TextFile("head\r\nlink 1 old.tlk\r\nlink 2 same.tlk\nlink 3 same.tlk\ntail");
    EXPECT_TRUE(Repath(file, {Link("3", "new/c.tlk"), Link("1", "a.tlk")}));
    EXPECT_EQ(tree.Read(QStringLiteral("a.tlk")),
              "head\r\nlink 1 a.tlk\r\nlink 2 same.tlk\nlink 3 new/c.tlk\ntail");
    EXPECT_EQ(calls.Calls(),
              QStringList{QStringLiteral("RepathFileLinks %1 [3=new/c.tlk] [1=a.tlk]").arg(file)});
    EXPECT_EQ(Errors(), QStringList());
}

TEST_F(PluginCalls, APathOf300CharactersReachesThePluginAsItsFirst259)
{
    const QString file = TextFile("link 1 old.tlk\n");
    const QString path = QString(250, u'a') + QString(50, u'b');
    EXPECT_TRUE(Repath(file, {MakeFileLinkInfo(QStringLiteral("1"), path)}));
    EXPECT_EQ(calls.Calls(),
              QStringList{QStringLiteral("RepathFileLinks %1 [1=%2]").arg(file, path.left(259))});
}

TEST_F(PluginCalls, RepathingNoLinksSucceedsEvenForAMissingFile)
{
    EXPECT_TRUE(Repath(tree.Path(QStringLiteral("none.tlk")), {}));
    EXPECT_EQ(log.Lines(), QStringList());
}

TEST_F(PluginCalls, ARepathThatReturnsFalseIsLogged)
{
    const QString file = TextFile("link 1 b\nnorepath\n");
    EXPECT_FALSE(Repath(file, {Link("1", "c")}));
    EXPECT_EQ(Errors(), QStringList{RepathFailure(file)});
    EXPECT_TRUE(
        log.Records().last().function.contains(QStringLiteral("PluginManager::RepathFileLinks(")));
    EXPECT_EQ(tree.Read(QStringLiteral("a.tlk")), "link 1 b\nnorepath\n");
}

TEST_F(PluginCalls, AnExceptionBecomesAFailureThatNamesTheModule)
{
    const QString file = ZooFile("CallThrows");
    EXPECT_FALSE(Get(file));
    EXPECT_EQ(Errors(), (QStringList{QStringLiteral("ERROR Plugin %1 threw an exception in "
                                                    "GetFileLinks: a fault of the zoo")
                                         .arg(module),
                                     GetFailure(file)}));
    log.Clear();
    EXPECT_FALSE(Repath(file, {Link("1", "b")}));
    EXPECT_EQ(Errors(), (QStringList{QStringLiteral("ERROR Plugin %1 threw an exception in "
                                                    "RepathFileLinks: a fault of the zoo")
                                         .arg(module),
                                     RepathFailure(file)}));
}

TEST_F(PluginCalls, AnythingThrownBecomesAFailure)
{
    const QString file = ZooFile("CallThrowsAnInt");
    EXPECT_FALSE(Get(file));
    EXPECT_EQ(Errors(), (QStringList{QStringLiteral("ERROR Plugin %1 threw an exception in "
                                                    "GetFileLinks: unknown exception")
                                         .arg(module),
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
        tree.File(QStringLiteral("own/a.syncplugin"),
                  Registration(name, QStringLiteral("FileLinkResolver"), QStringLiteral("zoo")));
        own.AddRegistrationFolders({tree.Path(QStringLiteral("own"))});
        const QString file = tree.File(QStringLiteral("a.zoo")).Path(QStringLiteral("a.zoo"));
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
