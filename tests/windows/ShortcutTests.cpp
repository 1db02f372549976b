// SPDX-License-Identifier: Apache-2.0

// Shortcuts (.lnk) are files. Qt answers for what they lead to, which is not what is to be copied.

#include "HeldFile.h"
#include "ReplacingFixture.h"
#include "support/FileOperations.h"
#include "support/PathUtilities.h"

namespace Halvern::Test {

using namespace Qt::StringLiterals;

namespace {

class Shortcuts : public ReplacingFixture
{
protected:
    /// A folder src/p with a file in a folder, and with shortcuts to a file and a folder that lie
    /// elsewhere, and to nothing.
    void MakeFolder()
    {
        tree.File(u"src/p/r/a.dat"_s).File(u"elsewhere/e.dat"_s, "e");
        Link(u"src/p/folder.lnk"_s, u"elsewhere"_s);
        Link(u"src/p/file.lnk"_s, u"elsewhere/e.dat"_s);
        Link(u"src/p/nowhere.lnk"_s, u"gone"_s);
    }
    void Link(const QString& name, const QString& target)
    {
        ASSERT_TRUE(QFile::link(tree.Path(target), tree.Path(name)));
        ASSERT_FALSE(tree.Read(name).isEmpty());
        ASSERT_NE(tree.Read(name), "e");
    }
    static bool IsThere(const QString& path) { return AttributesOf(path) != ~0UL; }

    const QStringList names = {u"file.lnk"_s, u"folder.lnk"_s, u"nowhere.lnk"_s};
};

} // namespace

TEST_F(Shortcuts, AreListedAsFilesAndNotFollowed)
{
    MakeFolder();

    QStringList entries = FileLink::ListFilesRecursive(
        Source(u"p"_s), {}, QDir::Dirs | QDir::Files | QDir::Hidden, true);

    entries.sort();
    EXPECT_EQ(Short(entries),
              (QStringList{u"src/p/file.lnk"_s, u"src/p/folder.lnk"_s, u"src/p/nowhere.lnk"_s,
                           u"src/p/r"_s, u"src/p/r/a.dat"_s}));
}

TEST_F(Shortcuts, AreOnlyListedWhereFilesAre)
{
    MakeFolder();

    EXPECT_EQ(Short(FileLink::ListFilesRecursive(Source(u"p"_s), {}, QDir::Dirs, false)),
              QStringList{u"src/p/r"_s});
    EXPECT_EQ(Short(FileLink::ListFilesRecursive(Source(u"p"_s), u"fold*"_s, QDir::Files, false)),
              QStringList{u"src/p/folder.lnk"_s});
}

TEST_F(Shortcuts, InAFolderAreImportedAsTheyAre)
{
    MakeFolder();
    log.Clear();

    EXPECT_TRUE(Import({Source(u"p"_s)}));

    for (const QString& name : names)
        EXPECT_EQ(tree.Read(u"cloud/p/"_s + name), tree.Read(u"src/p/"_s + name))
            << name.toStdString();
    EXPECT_EQ(tree.Read(u"cloud/p/r/a.dat"_s), "src/p/r/a.dat");
    EXPECT_EQ(Errors(), QStringList());
}

TEST_F(Shortcuts, AreImportedWhenTheyAreSelected)
{
    MakeFolder();
    log.Clear();

    for (const QString& name : names) {
        EXPECT_TRUE(Import({Source(u"p/"_s + name)})) << name.toStdString();
        EXPECT_EQ(tree.Read(u"cloud/"_s + name), tree.Read(u"src/p/"_s + name))
            << name.toStdString();
    }
    EXPECT_EQ(Errors(), QStringList());
}

TEST_F(Shortcuts, AreReplacedAsFiles)
{
    tree.File(u"src/a.dat"_s, "new");
    MakeFolder();
    for (const QString& name : names) {
        ASSERT_TRUE(QFile::copy(Source(u"p/"_s + name), Cloud(name)));

        EXPECT_TRUE(Replace(name)) << Errors().join(u'\n').toStdString();

        EXPECT_EQ(tree.Read(u"cloud/"_s + name), "new");
        EXPECT_FALSE(IsThere(Cloud(name + u".tmp"_s)));
    }
    EXPECT_EQ(tree.Read(u"elsewhere/e.dat"_s), "e");
}

TEST_F(Shortcuts, AreMovedWithoutWhatTheyLeadTo)
{
    MakeFolder();

    Import({Source(u"p"_s)}, {}, Global::MoveFiles);

    for (const QString& name : names) {
        EXPECT_TRUE(IsThere(Cloud(u"p/"_s + name))) << name.toStdString();
        EXPECT_FALSE(IsThere(Source(u"p/"_s + name))) << name.toStdString();
    }
    EXPECT_EQ(tree.Read(u"elsewhere/e.dat"_s), "e");
}

TEST_F(Shortcuts, HaveTheirOwnTimeAndSize)
{
    MakeFolder();
    tree.Touch(u"elsewhere/e.dat"_s, Time(7));
    for (const QString& name : names) {
        const QString path = Source(u"p/"_s + name);
        FileMapping mapping(path, Cloud(name), settings.authenticationConfigurationId);
        mapping.UpdateSourceFileProperties();

        EXPECT_EQ(mapping.GetSourceFileSize(), tree.Read(u"src/p/"_s + name).size());
        EXPECT_EQ(mapping.GetSourceFileLastModified(), FileLink::LastModified(path));
        EXPECT_GT(FileLink::LastModified(path), Time(7)) << name.toStdString();
        EXPECT_LE(FileLink::LastModified(path), QDateTime::currentDateTime().addSecs(1));
    }
}

TEST_F(Shortcuts, ThatDoNotExistAreNone)
{
    const QString path = Cloud(u"a.lnk"_s);
    EXPECT_FALSE(FileLink::PathExists(path));
    EXPECT_FALSE(FileLink::IsFile(path));
    EXPECT_FALSE(FileLink::LastModified(path).isValid());
    EXPECT_EQ(FileLink::MakeUniqueFilePath(path, u" (%1)"_s), path);
}

TEST_F(Shortcuts, AreInTheWayOfANewName)
{
    MakeFolder();
    for (const QString& name : {u"folder"_s, u"nowhere"_s})
        EXPECT_EQ(Short(FileLink::MakeUniqueFilePath(Source(u"p/%1.lnk"_s.arg(name)), u" (%1)"_s)),
                  u"src/p/%1 (2).lnk"_s.arg(name));
}

TEST_F(Shortcuts, ThatLeadNowhereAreLockedWhileAProgramHoldsThem)
{
    MakeFolder();
    const QString path = Source(u"p/nowhere.lnk"_s);
    EXPECT_FALSE(FileLink::IsFileLocked(path));

    const HeldFile held(path, u"r"_s, u"r"_s);

    EXPECT_TRUE(FileLink::IsFileLocked(path));
}

TEST_F(Shortcuts, OfANameThatIsAFolderAreFolders)
{
    tree.File(u"src/p/real.lnk/a.dat"_s, "a");

    EXPECT_TRUE(Import({Source(u"p"_s)}));

    EXPECT_EQ(tree.Read(u"cloud/p/real.lnk/a.dat"_s), "a");
}

} // namespace Halvern::Test
