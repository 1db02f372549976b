// SPDX-License-Identifier: Apache-2.0

#include "CommandFixture.h"
#include "TestPlugins.h"

#include <QtCore/QFile>

#include <algorithm>

namespace Halvern::Test {

namespace {

/// A file with a link was imported: work/a.tlk and work/b.tlk are cloud/Demo/a.tlk and b.tlk.
class DoctorCommand : public CommandFixture
{
protected:
    DoctorCommand() { tree.File(u"work/a.tlk"_s, "link 1 lib/b.tlk\n").File(u"work/lib/b.tlk"_s); }

    CommandResult Bring() const
    {
        return Import({u"a.tlk"_s, u"lib/b.tlk"_s, u"--to"_s, u"Demo"_s});
    }
    CommandResult Doctor(const QStringList& options = {}) const
    {
        return Run(QStringList{u"doctor"_s, u"--cloud-folder"_s, tree.Path(u"cloud"_s),
                               u"--database"_s, tree.Path(u"sync.db"_s), u"--plugin-path"_s,
                               tree.Path(u"plugins"_s), u"--plugin-path"_s, TestPluginFolder()} +
                   options);
    }
    /// "fault copies <subject>: <text>" of each, paths relative to the tree.
    QStringList Symptoms(const CommandResult& result) const
    {
        QStringList lines;
        for (const QJsonObject& event : result.Json())
            if (event[u"event"].toString() == u"symptom"_s)
                lines.append((event[u"fault"].toBool() ? u"fault "_s : u"note "_s) +
                             event[u"where"].toString() + u' ' +
                             event[u"subject"].toString().remove(tree.Path() + u'/') + u": "_s +
                             event[u"text"].toString());
        return lines;
    }
    QStringList Symptoms() const { return Symptoms(Doctor({u"--json"_s})); }
};

} // namespace

TEST_F(DoctorCommand, FindsNothingAfterAnImportAndChangesNothing)
{
    ASSERT_EQ(Bring().exitCode, 0);
    const FileTree::Snapshot before = Cloud();
    const QByteArray database = tree.Read(u"sync.db"_s);
    const CommandResult result = Doctor();
    EXPECT_EQ(result.exitCode, 0) << ::testing::PrintToString(result);
    EXPECT_EQ(result.Lines(), QStringList{u"no fault found; 2 copies are recorded"_s});
    EXPECT_EQ(Cloud(), before);
    EXPECT_EQ(tree.Read(u"sync.db"_s), database);
}

TEST_F(DoctorCommand, SaysBeforeTheFirstImportThatThereIsNothingYetAndMakesNothing)
{
    const CommandResult result = Doctor();
    EXPECT_EQ(result.exitCode, 0) << ::testing::PrintToString(result);
    EXPECT_EQ(result.Lines().filter(u"note"_s).size(), 2) << ::testing::PrintToString(result);
    EXPECT_FALSE(tree.Exists(u"cloud"_s));
    EXPECT_FALSE(tree.Exists(u"sync.db"_s));
}

TEST_F(DoctorCommand, NamesCopiesThatAreGoneOrWhoseLinksAreStillToBeRewritten)
{
    {
        const PluginOrders orders("norepath");
        ASSERT_EQ(Bring().exitCode, 7);
    }
    EXPECT_EQ(Symptoms(),
              QStringList{u"fault copies cloud/Demo/a.tlk: its links are still to be rewritten"_s});
    EXPECT_EQ(Doctor().exitCode, 1);
    ASSERT_EQ(Bring().exitCode, 0);
    tree.Remove(u"cloud/Demo/a.tlk"_s);
    EXPECT_EQ(Symptoms(), QStringList{u"note copies cloud/Demo/a.tlk: is not there any more"_s});
    EXPECT_EQ(Doctor().exitCode, 0);
}

TEST_F(DoctorCommand, NamesWhatKilledJobsLeft)
{
    ASSERT_EQ(Bring().exitCode, 0);
    tree.File(u"cloud/.corsync-0123456789abc/.lock"_s, "1\n")
        .File(u"cloud/Demo/.relink-0123456789abcdef.tmp"_s, "half")
        .File(u"cloud/.corsync-0123456789abd/mine.txt"_s, "mine");
    const QString left = u": was left by a job that was killed"_s;
    EXPECT_EQ(Symptoms(),
              (QStringList{u"note cloud folder cloud/.corsync-0123456789abc"_s + left,
                           u"note cloud folder cloud/Demo/.relink-0123456789abcdef.tmp"_s + left}));
}

TEST_F(DoctorCommand, NamesADamagedDatabaseAndGoesOn)
{
    ASSERT_EQ(Bring().exitCode, 0);
    tree.File(u"plugins/broken.syncplugin"_s,
              Registration(u"NoSuchLibrary.so"_s, u"FileLayout"_s, u"xyz"_s));
    tree.File(u"sync.db"_s, "this is no database, and never was one");
    const CommandResult result = Doctor({u"--json"_s});
    EXPECT_EQ(result.exitCode, 7);
    const QStringList symptoms = Symptoms(result);
    ASSERT_EQ(symptoms.size(), 2) << ::testing::PrintToString(result);
    EXPECT_EQ(symptoms[0], u"fault database sync.db: is damaged: file is not a database"_s);
    EXPECT_TRUE(symptoms[1].startsWith(u"fault plug-ins NoSuchLibrary.so: "_s));
}

TEST_F(DoctorCommand, FindsDamageAnywhereInTheDatabase)
{
    ASSERT_EQ(Bring().exitCode, 0);
    QByteArray bytes = tree.Read(u"sync.db"_s);
    ASSERT_GT(bytes.size(), 8192);
    bytes.replace(4096, 4096, QByteArray(4096, '\x55'));
    tree.File(u"sync.db"_s, bytes);
    const CommandResult result = Doctor();
    EXPECT_EQ(result.exitCode, 7) << ::testing::PrintToString(result);
    EXPECT_FALSE(result.Lines().filter(u"is damaged"_s).isEmpty());
    EXPECT_EQ(tree.Read(u"sync.db"_s), bytes);
}

TEST_F(DoctorCommand, NamesSettingsThatThereAreNone)
{
    tree.File(u"settings.ini"_s, "[General]\ncloudCacheFolder=" + tree.Path(u"cloud"_s).toUtf8() +
                                     "\ndatabaseFile=" + tree.Path(u"sync.db"_s).toUtf8() +
                                     "\nbaseStorLimit=5\n");
    const CommandResult result = Run({u"doctor"_s, u"--settings"_s, tree.Path(u"settings.ini"_s)});
    EXPECT_EQ(result.exitCode, 2) << ::testing::PrintToString(result);
    EXPECT_EQ(result.Lines().filter(u"baseStorLimit is the name of no setting"_s).size(), 1);
    tree.File(u"settings.ini"_s, "[General]\nloggedIn=maybe\n");
    const CommandResult bad = Run({u"doctor"_s, u"--settings"_s, tree.Path(u"settings.ini"_s)});
    EXPECT_EQ(bad.exitCode, 2) << ::testing::PrintToString(bad);
    EXPECT_FALSE(bad.Lines().filter(u"loggedIn has the wrong form"_s).isEmpty());
}

TEST_F(DoctorCommand, NamesABaseStoreThatCannotHoldAnything)
{
    ASSERT_EQ(Bring().exitCode, 0);
    if (tree.Exists(u"sync.db.base"_s))
        tree.Remove(u"sync.db.base"_s);
    tree.File(u"sync.db.base"_s, "in the way");
    EXPECT_EQ(Symptoms(), QStringList{u"fault base store sync.db.base: is no folder of its own"_s});
    EXPECT_EQ(Doctor().exitCode, 1);
}

} // namespace Halvern::Test
