// SPDX-License-Identifier: Apache-2.0

// Symbolic links, as every user can make them on POSIX; rights, full disks, letter case.

#include "BaseStoreFixture.h"
#include "OrdinaryRights.h"
#include "SmallDisk.h"

#include <QtCore/QCryptographicHash>
#include <QtCore/QFile>

#include <gmock/gmock.h>

namespace Halvern::Test {

namespace {

constexpr auto store = "sync.db.base";

class BaseStoreOnPosix : public BaseStore
{
protected:
    void Link(const QString& to, const QString& from) const
    {
        ASSERT_TRUE(QFile::link(tree.Path(to), tree.Path(from)));
    }

    QString Store(const QString& below = {}) const
    {
        return tree.Path(QString::fromLatin1(store) + below);
    }

    /// The name that a copy had before paths were kept.
    QString OldName(const QString& name, const QByteArray& content) const
    {
        const auto hash = [](const QByteArray& text) {
            return QCryptographicHash::hash(text, QCryptographicHash::Blake2b_256).toHex();
        };
        return QString::fromLatin1(store) + u'/' +
               QString::fromLatin1(hash(tree.Path(name).toLower().toUtf8()).left(32) + '-' +
                                   hash(content));
    }
};

} // namespace

TEST_F(BaseStore, KeepsNoSymbolicLink)
{
    tree.File(u"a"_s);
    ASSERT_TRUE(QFile::link(tree.Path(u"a"_s), tree.Path(u"link"_s)));
    EXPECT_FALSE(Save(u"link"_s));
    EXPECT_EQ(ErrorOf(u"link"_s), u"it is a symbolic link"_s);
    EXPECT_EQ(Kept(), QList<QByteArray>());
}

TEST_F(BaseStoreOnPosix, ThatIsASymbolicLinkKeepsNothing)
{
    tree.File(u"a"_s).Folder(u"elsewhere"_s);
    Link(u"elsewhere"_s, u"sync.db.base"_s);
    const QString reason = u"the base store %1 is a symbolic link"_s.arg(Store());
    EXPECT_EQ(ErrorOf(u"a"_s), reason);
    EXPECT_EQ(Status().problem, reason);
    EXPECT_FALSE(Save(u"a"_s));
    EXPECT_TRUE(Versions(u"a"_s).isEmpty());
    EXPECT_EQ(tree.Contents(u"elsewhere"_s), FileTree::Snapshot());
}

TEST_F(BaseStoreOnPosix, WritesThroughNoSymbolicLinkInIt)
{
    const QDateTime time = QDateTime::fromSecsSinceEpoch(1700000000);
    tree.File(u"a"_s, "content").File(u"mine"_s, "precious").Folder(u"elsewhere"_s);
    ASSERT_EQ(ErrorOf(u"a"_s), QString());
    const QString copy = u"sync.db.base/"_s + Copies().firstKey();
    tree.Remove(copy).File(u"mine"_s, "contenT").Touch(u"mine"_s, time);
    Link(u"mine"_s, copy);
    EXPECT_TRUE(Versions(u"a"_s).isEmpty());
    EXPECT_TRUE(Save(u"a"_s));
    EXPECT_EQ(tree.Read(u"mine"_s), "contenT");
    EXPECT_EQ(tree.Modified(u"mine"_s), time);
    EXPECT_EQ(Kept(), QList<QByteArray>({"content"}));

    for (const QString& name : {u"/paths"_s, u"/runs"_s}) {
        tree.Remove(u"sync.db.base"_s).Folder(u"sync.db.base"_s);
        Link(u"elsewhere"_s, u"sync.db.base"_s + name);
        const BaseStoreRun run;
        EXPECT_EQ(ErrorOf(u"a"_s), u"the base store %1 is a symbolic link"_s.arg(Store(name)));
        EXPECT_EQ(Status().problem, ErrorOf(u"a"_s));
    }
    tree.Remove(u"sync.db.base"_s).Folder(u"sync.db.base"_s);
    Link(u"mine"_s, u"sync.db.base/lock"_s);
    EXPECT_TRUE(ErrorOf(u"a"_s).startsWith(u"the base store "_s + Store(u"/lock"_s)));
    EXPECT_EQ(tree.Contents(u"elsewhere"_s), FileTree::Snapshot());
    EXPECT_EQ(tree.Read(u"mine"_s), "contenT");
}

TEST_F(BaseStoreOnPosix, ThatMayNotBeWrittenSaysSo)
{
    tree.File(u"a"_s).Folder(u"sync.db.base"_s);
    const QFile::Permissions readOnly = QFile::ReadOwner | QFile::ExeOwner;
    ASSERT_TRUE(QFile::setPermissions(Store(), readOnly));
    {
        const OrdinaryRights rights;
        EXPECT_EQ(Status().problem, u"the base store %1 cannot be written to"_s.arg(Store()));
        EXPECT_THAT(
            ErrorOf(u"a"_s).toStdString(),
            testing::AllOf(testing::StartsWith(u"the base store %1"_s.arg(Store()).toStdString()),
                           testing::HasSubstr("Permission denied")));
        EXPECT_FALSE(Save(u"a"_s));
    }
    ASSERT_TRUE(QFile::setPermissions(Store(), readOnly | QFile::WriteOwner));
    EXPECT_EQ(ErrorOf(u"a"_s), QString());
}

TEST_F(BaseStoreOnPosix, OnAFullDiskSaysSoAndLeavesNothingHalfDone)
{
    tree.Folder(u"sync.db.base"_s).File(u"large"_s, PatternBytes(600 * 1024));
    const SmallDisk disk(Store(), 256 * 1024);
    EXPECT_EQ(ErrorOf(u"large"_s),
              u"it cannot be copied to the base store %1: No space left on device"_s.arg(Store()));
    EXPECT_EQ(Kept(), QList<QByteArray>());
    tree.File(u"small"_s, PatternBytes(100 * 1024));
    EXPECT_EQ(ErrorOf(u"small"_s), QString());
}

TEST_F(BaseStoreOnPosix, NamesThatDifferInLetterCaseAloneHaveVersionsOfTheirOwn)
{
    tree.File(u"Part.prt"_s, "upper").File(u"part.prt"_s, "lower");
    ASSERT_EQ(ErrorOf(u"Part.prt"_s), QString());
    ASSERT_EQ(ErrorOf(u"part.prt"_s), QString());
    ASSERT_EQ(Versions(u"Part.prt"_s).size(), 1);
    EXPECT_EQ(Versions(u"Part.prt"_s).first().bytes, 5);
    EXPECT_EQ(Versions(u"part.prt"_s).size(), 1);
    EXPECT_NE(Versions(u"Part.prt"_s).first().storeFile, Versions(u"part.prt"_s).first().storeFile);
}

TEST_F(BaseStoreOnPosix, OfAnEarlierVersionStillAnswers)
{
    tree.File(OldName(u"Part.prt"_s, "old"), "old");
    EXPECT_EQ(Versions(u"Part.prt"_s).size(), 1);
    EXPECT_EQ(Versions(u"part.prt"_s).size(), 1) << "nothing tells which one it is of";
    EXPECT_TRUE(Versions(u"other.prt"_s).isEmpty());
    Wait();
    tree.File(u"part.prt"_s, "new");
    ASSERT_EQ(ErrorOf(u"part.prt"_s), QString());
    EXPECT_EQ(Versions(u"part.prt"_s).size(), 2);
    EXPECT_EQ(Versions(u"Part.prt"_s).size(), 1) << "the new one is known to be of the other";
    EXPECT_EQ(Versions(u"Part.prt"_s).first().bytes, 3);
}

} // namespace Halvern::Test
