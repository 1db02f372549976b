// SPDX-License-Identifier: Apache-2.0

// Old content of the cloud folder is always somewhere: at its place, or in the base store.

#include "ScenarioFixture.h"

#include <algorithm>

namespace Halvern::Test {

namespace {

class OldContent : public ScenarioFixture
{
protected:
    OldContent()
    {
        tree.File(u"work/a.txt"_s, "first");
        EXPECT_EQ(Report({u"a.txt"_s}).exitCode, 0);
    }
    QString Copy() const { return tree.Path(u"cloud/a.txt"_s); }
    void Import(const QByteArray& content)
    {
        Save(u"work/a.txt"_s, content);
        ASSERT_EQ(Report({u"a.txt"_s}).exitCode, 0);
    }
    /// A settings file with a base store of this size, in bytes.
    QStringList WithBaseStore(int limit)
    {
        tree.File(u"settings.ini"_s,
                  "[General]\ncloudCacheFolder=" + tree.Path(u"cloud"_s).toUtf8() +
                      "\ndatabaseFile=" + tree.Path(u"sync.db"_s).toUtf8() +
                      "\nbaseStoreLimit=" + QByteArray::number(limit) + '\n');
        return {u"--settings"_s, tree.Path(u"settings.ini"_s)};
    }
};

} // namespace

TEST_F(OldContent, OfEveryReplacedCopyIsAVersionThatCanBeListedAndRestored)
{
    Import("second");
    Import("third");
    const CommandResult versions = Corsync(u"versions"_s, {Copy()});
    EXPECT_EQ(versions.exitCode, 0) << ::testing::PrintToString(versions);
    EXPECT_GE(versions.Lines().size(), 2) << ::testing::PrintToString(versions);
    const CommandResult restored = Corsync(u"restore"_s, {Copy()});
    EXPECT_EQ(restored.exitCode, 0) << ::testing::PrintToString(restored);
    EXPECT_EQ(tree.Read(u"cloud/a.txt"_s), "second");
    EXPECT_TRUE(BaseStoreHolds("third")) << "what was replaced by restoring is a version, too";
}

TEST_F(OldContent, IsRestoredByItsNumber)
{
    Import("second");
    Import("third");
    QList<QByteArray> contents;
    for (const QString& number : {u"1"_s, u"2"_s}) {
        const QString output = tree.Path(u"out-"_s + number);
        const CommandResult result =
            Corsync(u"restore"_s, {Copy(), u"--at"_s, number, u"--output"_s, output});
        EXPECT_EQ(result.exitCode, 0) << ::testing::PrintToString(result);
        contents.append(StampOf(output).content);
    }
    std::sort(contents.begin(), contents.end());
    EXPECT_EQ(contents, (QList<QByteArray>{"first", "second"}));
    EXPECT_EQ(tree.Read(u"cloud/a.txt"_s), "third");
    EXPECT_NE(Corsync(u"restore"_s, {Copy(), u"--at"_s, u"99"_s}).exitCode, 0);
    EXPECT_EQ(tree.Read(u"cloud/a.txt"_s), "third");
}

TEST_F(OldContent, IsNotRestoredOverAFileThatStandsAtTheOutput)
{
    Import("second");
    tree.File(u"precious.txt"_s, "precious");
    const CommandResult result =
        Corsync(u"restore"_s, {Copy(), u"--output"_s, tree.Path(u"precious.txt"_s)});
    EXPECT_NE(result.exitCode, 0) << ::testing::PrintToString(result);
    EXPECT_EQ(tree.Read(u"precious.txt"_s), "precious");
}

TEST_F(OldContent, OfADeletedCopyCanBeRestored)
{
    Import("second");
    tree.Remove(u"cloud/a.txt"_s);
    const CommandResult result = Corsync(u"restore"_s, {Copy()});
    EXPECT_EQ(result.exitCode, 0) << ::testing::PrintToString(result);
    EXPECT_EQ(tree.Read(u"cloud/a.txt"_s), "first");
}

TEST_F(OldContent, OfAFileThatNeverHadAnyIsAnError)
{
    EXPECT_NE(Corsync(u"restore"_s, {Copy()}).exitCode, 0);
    EXPECT_EQ(tree.Read(u"cloud/a.txt"_s), "first");
    EXPECT_NE(Corsync(u"restore"_s, {tree.Path(u"cloud/never.txt"_s)}).exitCode, 0);
}

TEST_F(OldContent, StaysAtItsPlaceWhenTheBaseStoreIsBroken)
{
    tree.File(u"sync.db.base"_s, "a file where the folder must be");
    Save(u"work/a.txt"_s, "second");
    tree.File(u"work/b.txt"_s, "b");
    const ImportReport report = Report({u"a.txt"_s, u"b.txt"_s});
    EXPECT_EQ(report.exitCode, 1) << ::testing::PrintToString(report);
    EXPECT_EQ(tree.Read(u"cloud/a.txt"_s), "first");
    tree.Remove(u"sync.db.base"_s);
    EXPECT_EQ(Report({u"a.txt"_s, u"b.txt"_s}).exitCode, 0);
    EXPECT_EQ(tree.Read(u"cloud/a.txt"_s), "second");
    EXPECT_TRUE(BaseStoreHolds("first"));
}

TEST_F(OldContent, StaysAtItsPlaceWhenItIsLargerThanTheBaseStore)
{
    Import(QByteArray(2000, 'x'));
    Save(u"work/a.txt"_s, "third");
    const CommandResult result = Run(QStringList{u"import"_s, u"a.txt"_s} + WithBaseStore(1000));
    EXPECT_EQ(result.exitCode, 1) << ::testing::PrintToString(result);
    EXPECT_EQ(tree.Read(u"cloud/a.txt"_s), QByteArray(2000, 'x'));
}

TEST_F(OldContent, OfOneRunIsNotPushedOutByTheSameRun)
{
    FileTree::Snapshot old;
    for (int file = 0; file < 5; ++file) {
        const QString name = u"many/f%1.bin"_s.arg(file);
        old.insert(name, PatternBytes(400, quint32(file)));
        tree.File(u"work/"_s + name, old[name]);
    }
    ASSERT_EQ(Report({u"many"_s}).exitCode, 0);
    for (const QString& name : old.keys())
        Save(u"work/"_s + name, "new " + name.toUtf8());
    Run(QStringList{u"import"_s, u"many"_s} + WithBaseStore(1000));
    for (auto it = old.begin(); it != old.end(); ++it)
        EXPECT_TRUE(tree.Read(u"cloud/"_s + it.key()) == it.value() || BaseStoreHolds(it.value()))
            << it.key().toStdString() << " is nowhere";
}

TEST_F(OldContent, IsKeptOnceHoweverOftenTheSameIsReplaced)
{
    for (int round = 0; round < 3; ++round) {
        Import("second");
        Import("first");
    }
    EXPECT_TRUE(BaseStoreHolds("first"));
    EXPECT_TRUE(BaseStoreHolds("second"));
    EXPECT_EQ(Corsync(u"versions"_s, {Copy()}).exitCode, 0);
}

} // namespace Halvern::Test
