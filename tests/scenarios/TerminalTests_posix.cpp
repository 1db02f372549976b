// SPDX-License-Identifier: Apache-2.0

// What reaches a terminal or another program: no control characters, nothing of a plug-in's own,
// and no success without an output.

#include "ChildRights.h"
#include "ScenarioFixture.h"

#include <QtCore/QFile>

#include <functional>

namespace Halvern::Test {

namespace {

class TerminalOutput : public ScenarioFixture
{
protected:
    /// The bytes of both outputs of any command, as they come.
    QByteArray Raw(const QStringList& arguments) const
    {
        QProcess process;
        Prepare(process, arguments);
        process.setProcessChannelMode(QProcess::MergedChannels);
        process.start();
        EXPECT_TRUE(process.waitForFinished(60'000));
        return process.readAllStandardOutput();
    }
    static void ExpectNoControlCharacters(const QByteArray& output)
    {
        const QString text = QString::fromUtf8(output);
        for (const QChar character : text)
            EXPECT_FALSE(character.category() == QChar::Other_Control && character != u'\n')
                << "U+" << std::hex << uint(character.unicode()) << " in " << output.toStdString();
        EXPECT_FALSE(text.contains(u'\u202e')) << "turns the direction of the text";
    }
    int ExitCodeWith(const std::function<void(QProcess&)>& prepare, const QStringList& arguments)
    {
        QProcess process;
        Prepare(process, arguments);
        prepare(process);
        process.start();
        EXPECT_TRUE(process.waitForFinished(60'000));
        return process.exitCode();
    }

    const QString Evil = u"e\u001b[31mvil\a\r\u009b2J\u202e.tlk"_s;
};

} // namespace

TEST_F(TerminalOutput, HoldsNoControlCharactersFromNamesAndLinks)
{
    tree.File(u"work/proj/"_s + Evil, "link 1 \x1b]0;title\x07gone\nlink 2 x.tlk\nnorepath\n")
        .File(u"work/proj/x.tlk"_s, "fail\n")
        .File(u"work/proj/sub\nfolder/"_s + Evil, "a")
        .File(u"cloud/Taken/proj/"_s + Evil, "foreign");
    const QString file = u"proj/"_s + Evil;
    for (const QStringList& options :
         {QStringList(), QStringList{u"-v"_s}, QStringList{u"-vvv"_s}, QStringList{u"-q"_s},
          QStringList{u"--dry-run"_s}, QStringList{u"--to"_s, u"Taken"_s}, QStringList{u"--json"_s},
          QStringList{u"--to"_s, u"x\u001b[2J"_s}, QStringList{u"--move"_s}})
        ExpectNoControlCharacters(Raw(ImportArguments(QStringList{u"proj"_s} + options)));
}

TEST_F(TerminalOutput, HoldsNoControlCharactersInAnyCommand)
{
    tree.File(u"work/"_s + Evil, "link 1 \x1b]0;title\x07gone\nlink 2 https://x/\x1b[2J\n")
        .File(u"plugins/"_s + Evil + u".syncplugin"_s, "<SyncPlugins")
        .File(u"plugins/names.syncplugin"_s,
              "<SyncPlugins><Plugin Module=\"no&#27;such.so\" Name=\"a&#x9b;b\">"
              "<FileLinkResolver FileTypes=\"x\"/></Plugin></SyncPlugins>\n");
    const QStringList plugins{u"--plugin-path"_s, tree.Path(u"plugins"_s), u"--plugin-path"_s,
                              TestPluginFolder()};
    for (const QStringList& command :
         {QStringList{u"links"_s, Evil} + plugins, QStringList{u"links"_s, u"no\u001b[31m.tlk"_s},
          QStringList{u"plugins"_s} + plugins, QStringList{u"import"_s, u"no\u001b[31m.tlk"_s},
          QStringList{u"retry"_s, tree.Path(u"cloud/no\u001b[31m"_s)},
          QStringList{u"versions"_s, tree.Path(u"cloud/no\u001b[31m"_s)},
          QStringList{u"restore"_s, tree.Path(u"cloud/no\u001b[31m"_s)},
          QStringList{u"import"_s, u"--no\u001b[31m"_s}, QStringList{u"no\u001b[31m"_s}})
        ExpectNoControlCharacters(Raw(command));
}

TEST_F(TerminalOutput, HoldsNoControlCharactersInTheMessagesOfPlugins)
{
    tree.File(u"work/long.tlk"_s, "link 1 \x1b[31m" + QByteArray(300, 'x') + '\n');
    ExpectNoControlCharacters(Raw(ImportArguments({u"long.tlk"_s})));
    ExpectNoControlCharacters(Raw(ImportArguments({u"long.tlk"_s, u"-vvv"_s})));
    const QByteArray log = tree.Path(u"work/run.log"_s).toUtf8();
    Raw(ImportArguments({u"long.tlk"_s, u"--log-file"_s, QString::fromUtf8(log)}));
}

TEST_F(TerminalOutput, InJsonIsNothingThatAPluginPrints)
{
    tree.File(u"work/top.tlk"_s, "link 1 ../lib/part.tlk\n").File(u"lib/part.tlk"_s, "part\n");
    const PluginOrders orders("prints");
    const ImportReport report = Report({u"top.tlk"_s});
    EXPECT_EQ(report.exitCode, 0) << ::testing::PrintToString(report);
    EXPECT_FALSE(report.result.out.contains(u"hello"_s));
    EXPECT_EQ(report.Statuses(), QStringList(2, u"copied"_s));
    const CommandResult links =
        Run({u"links"_s, u"top.tlk"_s, u"--json"_s, u"--plugin-path"_s, tree.Path(u"plugins"_s),
             u"--plugin-path"_s, TestPluginFolder()});
    EXPECT_EQ(links.Json().size(), 2);
    EXPECT_FALSE(links.out.contains(u"hello"_s));
}

TEST_F(TerminalOutput, ToAFullDiskIsAnErrorInEveryCommand)
{
    tree.File(u"work/a.txt"_s);
    Design(u"work/a.gltf"_s, {u"a.txt"_s});
    const auto full = [](QProcess& process) { process.setStandardOutputFile(u"/dev/full"_s); };
    for (const QStringList& command :
         {ImportArguments({u"a.txt"_s}), ImportArguments({u"a.txt"_s, u"--json"_s}),
          ImportArguments({u"a.txt"_s, u"-n"_s}), QStringList{u"links"_s, u"a.gltf"_s},
          QStringList{u"links"_s, u"a.gltf"_s, u"--json"_s}, QStringList{u"plugins"_s},
          QStringList{u"--help"_s}, QStringList{u"--version"_s}})
        EXPECT_NE(ExitCodeWith(full, command), 0) << command.join(u' ').toStdString();
}

TEST_F(TerminalOutput, ThatIsClosedIsAnErrorAndGoesIntoNoFile)
{
    tree.File(u"work/a.txt"_s);
    EXPECT_NE(ExitCodeWith([](QProcess& process) { CloseOutput(process); },
                           ImportArguments({u"a.txt"_s})),
              0);
    EXPECT_EQ(ExitCodeWith([](QProcess&) {}, ImportArguments({u"a.txt"_s})), 0);
    EXPECT_FALSE(tree.Read(u"sync.db"_s).contains("cloud cache folder"));
}

} // namespace Halvern::Test
