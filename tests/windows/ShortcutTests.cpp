// SPDX-License-Identifier: Apache-2.0

// Shortcuts (.lnk) are files. Qt answers for what they lead to, which is not what is to be copied.

#include "HeldFile.h"
#include "ReplacingFixture.h"
#include "support/FileOperations.h"
#include "support/PathUtilities.h"

namespace Halvern::Test {

namespace {

class Shortcuts : public ReplacingFixture
{
protected:
    /// A folder src/p with a file in a folder, and with shortcuts to a file and a folder that lie
    /// elsewhere, and to nothing.
    void MakeFolder()
    {
        tree.File(QStringLiteral("src/p/r/a.dat")).File(QStringLiteral("elsewhere/e.dat"), "e");
        Link(QStringLiteral("src/p/folder.lnk"), QStringLiteral("elsewhere"));
        Link(QStringLiteral("src/p/file.lnk"), QStringLiteral("elsewhere/e.dat"));
        Link(QStringLiteral("src/p/nowhere.lnk"), QStringLiteral("gone"));
    }
    void Link(const QString& name, const QString& target)
    {
        ASSERT_TRUE(QFile::link(tree.Path(target), tree.Path(name)));
        ASSERT_FALSE(tree.Read(name).isEmpty());
        ASSERT_NE(tree.Read(name), "e");
    }
    static bool IsThere(const QString& path) { return AttributesOf(path) != ~0UL; }

    const QStringList names = {QStringLiteral("file.lnk"), QStringLiteral("folder.lnk"),
                               QStringLiteral("nowhere.lnk")};
};

} // namespace

TEST_F(Shortcuts, AreListedAsFilesAndNotFollowed)
{
    MakeFolder();

    QStringList entries = FileLink::ListFilesRecursive(
        Source(QStringLiteral("p")), {}, QDir::Dirs | QDir::Files | QDir::Hidden, true);

    entries.sort();
    EXPECT_EQ(Short(entries),
              (QStringList{QStringLiteral("src/p/file.lnk"), QStringLiteral("src/p/folder.lnk"),
                           QStringLiteral("src/p/nowhere.lnk"), QStringLiteral("src/p/r"),
                           QStringLiteral("src/p/r/a.dat")}));
}

TEST_F(Shortcuts, AreOnlyListedWhereFilesAre)
{
    MakeFolder();

    EXPECT_EQ(
        Short(FileLink::ListFilesRecursive(Source(QStringLiteral("p")), {}, QDir::Dirs, false)),
        QStringList{QStringLiteral("src/p/r")});
    EXPECT_EQ(Short(FileLink::ListFilesRecursive(Source(QStringLiteral("p")),
                                                 QStringLiteral("fold*"), QDir::Files, false)),
              QStringList{QStringLiteral("src/p/folder.lnk")});
}

TEST_F(Shortcuts, InAFolderAreImportedAsTheyAre)
{
    MakeFolder();
    log.Clear();

    EXPECT_TRUE(Import({Source(QStringLiteral("p"))}));

    for (const QString& name : names)
        EXPECT_EQ(tree.Read(QStringLiteral("cloud/p/") + name),
                  tree.Read(QStringLiteral("src/p/") + name))
            << name.toStdString();
    EXPECT_EQ(tree.Read(QStringLiteral("cloud/p/r/a.dat")), "src/p/r/a.dat");
    EXPECT_EQ(Errors(), QStringList());
}

TEST_F(Shortcuts, AreImportedWhenTheyAreSelected)
{
    MakeFolder();
    log.Clear();

    for (const QString& name : names) {
        EXPECT_TRUE(Import({Source(QStringLiteral("p/") + name)})) << name.toStdString();
        EXPECT_EQ(tree.Read(QStringLiteral("cloud/") + name),
                  tree.Read(QStringLiteral("src/p/") + name))
            << name.toStdString();
    }
    EXPECT_EQ(Errors(), QStringList());
}

TEST_F(Shortcuts, AreReplacedAsFiles)
{
    tree.File(QStringLiteral("src/a.dat"), "new");
    MakeFolder();
    for (const QString& name : names) {
        ASSERT_TRUE(QFile::copy(Source(QStringLiteral("p/") + name), Cloud(name)));

        EXPECT_TRUE(Replace(name)) << Errors().join(u'\n').toStdString();

        EXPECT_EQ(tree.Read(QStringLiteral("cloud/") + name), "new");
        EXPECT_FALSE(IsThere(Cloud(name + QStringLiteral(".tmp"))));
    }
    EXPECT_EQ(tree.Read(QStringLiteral("elsewhere/e.dat")), "e");
}

TEST_F(Shortcuts, AreMovedWithoutWhatTheyLeadTo)
{
    MakeFolder();

    Import({Source(QStringLiteral("p"))}, {}, Global::MoveFiles);

    for (const QString& name : names) {
        EXPECT_TRUE(IsThere(Cloud(QStringLiteral("p/") + name))) << name.toStdString();
        EXPECT_FALSE(IsThere(Source(QStringLiteral("p/") + name))) << name.toStdString();
    }
    EXPECT_EQ(tree.Read(QStringLiteral("elsewhere/e.dat")), "e");
}

TEST_F(Shortcuts, HaveTheirOwnTimeAndSize)
{
    MakeFolder();
    tree.Touch(QStringLiteral("elsewhere/e.dat"), Time(7));
    for (const QString& name : names) {
        const QString path = Source(QStringLiteral("p/") + name);
        FileMapping mapping(path, Cloud(name), settings.authenticationConfigurationId);
        mapping.UpdateSourceFileProperties();

        EXPECT_EQ(mapping.GetSourceFileSize(), tree.Read(QStringLiteral("src/p/") + name).size());
        EXPECT_EQ(mapping.GetSourceFileLastModified(), FileLink::LastModified(path));
        EXPECT_GT(FileLink::LastModified(path), Time(7)) << name.toStdString();
        EXPECT_LE(FileLink::LastModified(path), QDateTime::currentDateTime().addSecs(1));
    }
}

TEST_F(Shortcuts, ThatDoNotExistAreNone)
{
    const QString path = Cloud(QStringLiteral("a.lnk"));
    EXPECT_FALSE(FileLink::PathExists(path));
    EXPECT_FALSE(FileLink::IsFile(path));
    EXPECT_FALSE(FileLink::LastModified(path).isValid());
    EXPECT_EQ(FileLink::MakeUniqueFilePath(path, QStringLiteral(" (%1)")), path);
}

TEST_F(Shortcuts, AreInTheWayOfANewName)
{
    MakeFolder();
    for (const QString& name : {QStringLiteral("folder"), QStringLiteral("nowhere")})
        EXPECT_EQ(Short(FileLink::MakeUniqueFilePath(Source(QStringLiteral("p/%1.lnk").arg(name)),
                                                     QStringLiteral(" (%1)"))),
                  QStringLiteral("src/p/%1 (2).lnk").arg(name));
}

TEST_F(Shortcuts, ThatLeadNowhereAreLockedWhileAProgramHoldsThem)
{
    MakeFolder();
    const QString path = Source(QStringLiteral("p/nowhere.lnk"));
    EXPECT_FALSE(FileLink::IsFileLocked(path));

    const HeldFile held(path, QStringLiteral("r"), QStringLiteral("r"));

    EXPECT_TRUE(FileLink::IsFileLocked(path));
}

TEST_F(Shortcuts, OfANameThatIsAFolderAreFolders)
{
    tree.File(QStringLiteral("src/p/real.lnk/a.dat"), "a");

    EXPECT_TRUE(Import({Source(QStringLiteral("p"))}));

    EXPECT_EQ(tree.Read(QStringLiteral("cloud/p/real.lnk/a.dat")), "a");
}

} // namespace Halvern::Test
