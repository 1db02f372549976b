// SPDX-License-Identifier: Apache-2.0

#include "CommandFixture.h"

#include "VersionsCommand.h"

#include <QtCore/QRegularExpression>

namespace Halvern::Test {

namespace {

class VersionsOfTheCommand : public CommandFixture
{
protected:
    /// `corsync COMMAND` over folder and database of the tree.
    CommandResult Command(const QString& command, const QStringList& arguments) const
    {
        return Run(QStringList{command, u"--cloud-folder"_s, tree.Path(u"cloud"_s), u"--database"_s,
                               tree.Path(u"sync.db"_s)} +
                   arguments);
    }

    /// Imports "a.tlk" to "Demo" as often as there are contents.
    void ImportEach(const QList<QByteArray>& contents)
    {
        for (const QByteArray& content : contents) {
            tree.File(u"work/a.tlk"_s, content);
            const CommandResult result = Import({u"a.tlk"_s, u"--to"_s, u"Demo"_s});
            EXPECT_EQ(result.exitCode, 0) << ::testing::PrintToString(result);
        }
    }
};

} // namespace

TEST_F(VersionsOfTheCommand, AreListedWithNumberTimeAndSize)
{
    ImportEach({"one\n", "second\n", "the third\n"});
    const CommandResult result = Command(u"versions"_s, {u"Demo/a.tlk"_s});
    EXPECT_EQ(result.exitCode, 0) << ::testing::PrintToString(result);
    const QStringList lines = result.Lines();
    ASSERT_EQ(lines.size(), 3) << ::testing::PrintToString(result);
    EXPECT_EQ(lines[0], tree.Path(u"cloud/Demo/a.tlk"_s) + u": 2 old versions"_s);
    static const QRegularExpression line(
        u"^ +([12])  \\d{4}-\\d\\d-\\d\\d \\d\\d:\\d\\d:\\d\\d +(\\d+) bytes$"_s);
    EXPECT_EQ(line.match(lines[1]).captured(1) + line.match(lines[1]).captured(2), u"17"_s);
    EXPECT_EQ(line.match(lines[2]).captured(1) + line.match(lines[2]).captured(2), u"24"_s);
    EXPECT_EQ(Command(u"versions"_s, {u"Demo/a.tlk"_s, u"--quiet"_s}).out, QString());
}

TEST_F(VersionsOfTheCommand, AreListedAsJson)
{
    ImportEach({"one\n", "second\n"});
    const QList<QJsonObject> json = Command(u"versions"_s, {u"Demo/a.tlk"_s, u"--json"_s}).Json();
    ASSERT_EQ(json.size(), 2);
    EXPECT_EQ(json[0][u"event"].toString(), u"version"_s);
    EXPECT_EQ(json[0][u"file"].toString(), tree.Path(u"cloud/Demo/a.tlk"_s));
    EXPECT_EQ(json[0][u"number"].toInt(), 1);
    EXPECT_EQ(json[0][u"bytes"].toInt(), 4);
    const QString saved = json[0][u"saved"].toString();
    EXPECT_TRUE(saved.endsWith(u'Z')) << saved.toStdString();
    EXPECT_LT(qAbs(QDateTime::fromString(saved, Qt::ISODateWithMs)
                       .secsTo(QDateTime::currentDateTimeUtc())),
              600);
    EXPECT_TRUE(json[0][u"storeFile"].toString().startsWith(tree.Path(u"sync.db.base/"_s)));
    EXPECT_EQ(json[1],
              (QJsonObject{{u"event"_s, u"summary"_s}, {u"versions"_s, 1}, {u"exitCode"_s, 0}}));
}

TEST_F(VersionsOfTheCommand, OfAFileThatWasNeverReplacedThereAreNone)
{
    ImportEach({"one\n"});
    const CommandResult none = Command(u"versions"_s, {u"Demo/a.tlk"_s});
    EXPECT_EQ(none.exitCode, 0);
    EXPECT_EQ(none.out, tree.Path(u"cloud/Demo/a.tlk"_s) + u": no old versions\n"_s);
    const CommandResult missing = Command(u"versions"_s, {u"Demo/b.tlk"_s});
    EXPECT_EQ(missing.exitCode, 3);
    EXPECT_TRUE(missing.err.contains(u"no such file, and no old version of it"_s));
}

TEST_F(VersionsOfTheCommand, LeaveNoTrace)
{
    tree.File(u"cloud/a"_s);
    const FileTree::Snapshot before = tree.Contents();
    EXPECT_EQ(Command(u"versions"_s, {u"a"_s}).exitCode, 0);
    EXPECT_EQ(tree.Contents(), before);
}

TEST_F(VersionsOfTheCommand, AreRestoredAndTheRestoreIsUndoneByAnother)
{
    ImportEach({"one\n", "second\n", "the third\n"});
    const CommandResult result = Command(u"restore"_s, {u"Demo/a.tlk"_s, u"--at"_s, u"2"_s});
    EXPECT_EQ(result.exitCode, 0) << ::testing::PrintToString(result);
    EXPECT_TRUE(result.out.startsWith(
        u"restored   %1 (version 2, kept "_s.arg(tree.Path(u"cloud/Demo/a.tlk"_s))))
        << ::testing::PrintToString(result);
    EXPECT_TRUE(result.out.endsWith(u"; what stood there is version 1 now)\n"_s));
    EXPECT_EQ(Cloud(), (FileTree::Snapshot{{u"Demo/a.tlk"_s, "one\n"}}));
    EXPECT_EQ(Command(u"restore"_s, {u"Demo/a.tlk"_s}).exitCode, 0);
    EXPECT_EQ(Cloud(), (FileTree::Snapshot{{u"Demo/a.tlk"_s, "the third\n"}}));
}

TEST_F(VersionsOfTheCommand, AreWrittenElsewhereWhenAskedFor)
{
    ImportEach({"one\n", "second\n"});
    const QStringList arguments{u"Demo/a.tlk"_s, u"--output"_s, u"old.tlk"_s, u"--json"_s};
    const QList<QJsonObject> json = Command(u"restore"_s, arguments).Json();
    ASSERT_EQ(json.size(), 2);
    EXPECT_EQ(json[0][u"event"].toString(), u"restored"_s);
    EXPECT_EQ(json[0][u"file"].toString(), tree.Path(u"work/old.tlk"_s));
    EXPECT_EQ(json[0][u"number"].toInt(), 1);
    EXPECT_EQ(json[0][u"bytes"].toInt(), 4);
    EXPECT_EQ(json[0][u"replaced"].toBool(true), false);
    EXPECT_TRUE(json[0][u"saved"].toString().endsWith(u'Z'));
    EXPECT_EQ(json[1],
              (QJsonObject{{u"event"_s, u"summary"_s}, {u"restored"_s, 1}, {u"exitCode"_s, 0}}));
    EXPECT_EQ(tree.Read(u"work/old.tlk"_s), "one\n");
    EXPECT_EQ(Cloud(), (FileTree::Snapshot{{u"Demo/a.tlk"_s, "second\n"}}));
    const CommandResult again = Command(u"restore"_s, arguments);
    EXPECT_EQ(again.exitCode, 2);
    ASSERT_EQ(again.Json().size(), 1);
    EXPECT_EQ(again.Json()[0][u"event"].toString(), u"error"_s);
    EXPECT_EQ(tree.Read(u"work/old.tlk"_s), "one\n");
}

TEST_F(VersionsOfTheCommand, ThatDoNotExistAreAnErrorAndNothingIsChanged)
{
    ImportEach({"one\n", "second\n"});
    EXPECT_EQ(Command(u"restore"_s, {u"Demo/a.tlk"_s, u"--at"_s, u"7"_s}).exitCode, 3);
    EXPECT_EQ(Command(u"restore"_s, {u"Demo/b.tlk"_s}).exitCode, 3);
    for (const QString& number : {u"0"_s, u"-1"_s, u"last"_s})
        EXPECT_EQ(Command(u"restore"_s, {u"Demo/a.tlk"_s, u"--at"_s, number}).exitCode, 2);
    EXPECT_EQ(Command(u"restore"_s, {}).exitCode, 2);
    EXPECT_EQ(Command(u"versions"_s, {}).exitCode, 2);
    EXPECT_EQ(Cloud(), (FileTree::Snapshot{{u"Demo/a.tlk"_s, "second\n"}}));
}

TEST(TimesOfVersions, AreLocalForPeopleAndUtcForScripts)
{
    const QDateTime time = QDateTime::fromMSecsSinceEpoch(1700000000123, Qt::UTC);
    EXPECT_EQ(Cli::JsonTime(time), u"2023-11-14T22:13:20.123Z"_s);
    EXPECT_EQ(Cli::JsonTime(time.toLocalTime()), u"2023-11-14T22:13:20.123Z"_s);
    EXPECT_EQ(Cli::LocalTime(time), time.toLocalTime().toString(u"yyyy-MM-dd HH:mm:ss"_s));
    EXPECT_EQ(
        QDateTime::fromString(Cli::LocalTime(time), u"yyyy-MM-dd HH:mm:ss"_s).toSecsSinceEpoch(),
        1700000000);
}

} // namespace Halvern::Test
