// SPDX-License-Identifier: Apache-2.0

#include "ImporterFixture.h"

#include <QtCore/QFile>

namespace Halvern::Test {

using namespace Qt::Literals::StringLiterals;

class PosixIntake : public ImporterFixture
{
protected:
    bool Initialize(const QStringList& sources, const QString& target, bool targetIsFile = false)
    {
        return importer.Initialize(sources, target, targetIsFile, {}, {});
    }
    void Link(const QString& to, const QString& name)
    {
        ASSERT_TRUE(QFile::link(tree.Path(to), tree.Path(name)));
    }

    FileLinkImporterImp importer{nullptr};
};

TEST_F(PosixIntake, ASymbolicLinkToAFolderIsPassedOver)
{
    tree.File(u"src/real/p.prt"_s);
    Link(u"src/real"_s, u"src/link"_s);
    ASSERT_TRUE(Initialize({Source(u"link"_s)}, Cloud()));
    EXPECT_EQ(Members(importer), QStringList());
}

TEST_F(PosixIntake, ASymbolicLinkToAFolderIsPassedOverWithASlashAtItsEnd)
{
    tree.File(u"src/real/p.prt"_s);
    Link(u"src/real"_s, u"src/link"_s);
    ASSERT_TRUE(Initialize({tree.Path(u"src/link"_s) + u'/'}, Cloud()));
    EXPECT_EQ(Members(importer), QStringList());
}

TEST_F(PosixIntake, TheRootOfAShareIsPassedOverEvenWhereAFileHasThatName)
{
    const QString root = u"\\\\server\\share"_s;
    const QString file = root + u"\\a"_s;
    tree.File(u"src/"_s + root).File(u"src/"_s + file);
    const QString before = QDir::currentPath();
    ASSERT_TRUE(QDir::setCurrent(Source()));
    EXPECT_TRUE(Initialize({root}, Cloud(u"x"_s), true));
    EXPECT_EQ(Members(importer), QStringList());
    EXPECT_TRUE(Initialize({file}, Cloud(u"x"_s), true));
    EXPECT_EQ(Members(importer).size(), 1) << "a file on the share";
    ASSERT_TRUE(QDir::setCurrent(before));
}

TEST_F(PosixIntake, ASymbolicLinkToAFileIsAFile)
{
    tree.File(u"src/real.prt"_s);
    Link(u"src/real.prt"_s, u"src/link.prt"_s);
    ASSERT_TRUE(Initialize({Source(u"link.prt"_s)}, Cloud()));
    EXPECT_EQ(Targets(importer), QStringList{u"src/link.prt -> cloud/link.prt"_s});
}

TEST_F(PosixIntake, ABrokenSymbolicLinkIsPassedOver)
{
    Link(u"src/gone"_s, u"src/link"_s);
    ASSERT_TRUE(Initialize({Source(u"link"_s)}, Cloud()));
    EXPECT_EQ(Members(importer), QStringList());
}

TEST_F(PosixIntake, ALinkedFolderInsideASelectedFolderIsFollowed)
{
    tree.File(u"src/real/p.prt"_s).Folder(u"src/Proj"_s);
    Link(u"src/real"_s, u"src/Proj/link"_s);
    ASSERT_TRUE(Initialize({Source(u"Proj"_s)}, Cloud()));
    EXPECT_EQ(Targets(importer),
              (QStringList{u"src/Proj -> cloud/Proj"_s, u"src/Proj/link -> cloud/Proj/link"_s,
                           u"src/Proj/link/p.prt -> cloud/Proj/link/p.prt"_s}));
}

TEST_F(PosixIntake, ALinkBackToASelectedFolderEnds)
{
    tree.File(u"src/Proj/p.prt"_s);
    Link(u"src/Proj"_s, u"src/Proj/loop"_s);
    ASSERT_TRUE(Initialize({Source(u"Proj"_s)}, Cloud()));
    EXPECT_LE(importer.GetFileSet()->GetCount(), 4);
    EXPECT_NE(Member(importer, u"src/Proj/p.prt"_s), nullptr);
}

TEST_F(PosixIntake, EveryWayToWriteTheRootFolderIsPassedOver)
{
    ASSERT_TRUE(Initialize({u"/"_s, u"/."_s, u"//"_s, u"/tmp/.."_s}, Cloud()));
    EXPECT_TRUE(importer.GetFileSet()->IsEmpty());
}

TEST_F(PosixIntake, ANameWithAColonHasNoPlaceBelowATargetFolder)
{
    tree.File(u"src/Proj/12:30.prt"_s).File(u"src/Proj/b.prt"_s);
    ASSERT_TRUE(Initialize({Source(u"Proj"_s)}, Cloud()));
    EXPECT_EQ(Targets(importer),
              (QStringList{u"src/Proj -> cloud/Proj"_s, u"src/Proj/b.prt -> cloud/Proj/b.prt"_s}));
}

TEST_F(PosixIntake, ANameWithAColonCanGoToAnExactTarget)
{
    tree.File(u"src/12:30.prt"_s);
    ASSERT_TRUE(Initialize({Source(u"12:30.prt"_s)}, Cloud(u"x.prt"_s), true));
    EXPECT_EQ(Targets(importer), QStringList{u"src/12:30.prt -> cloud/x.prt"_s});
}

TEST_F(PosixIntake, ATargetReachedThroughALinkIsNamedBelowTheCloudCacheFolder)
{
    tree.File(u"src/b.prt"_s).Folder(u"cloud/F"_s);
    Link(u"cloud"_s, u"other"_s);
    ASSERT_TRUE(Initialize({Source(u"b.prt"_s)}, tree.Path(u"other/F"_s)));
    EXPECT_EQ(Targets(importer), QStringList{u"src/b.prt -> cloud/F/b.prt"_s});
}

TEST_F(PosixIntake, ASourceReachedThroughALinkIntoTheCloudCacheFolderIsPassedOver)
{
    tree.File(u"cloud/b.prt"_s);
    Link(u"cloud"_s, u"other"_s);
    ASSERT_TRUE(Initialize({tree.Path(u"other/b.prt"_s)}, Cloud(u"F"_s)));
    EXPECT_EQ(Members(importer), QStringList());
}

TEST_F(PosixIntake, ASourceWithAColonInItsFolderIsALocalFile)
{
    Assembly(u"src/v:1/a.tasm"_s, {u"1 b.tlk"_s});
    tree.File(u"src/v:1/b.tlk"_s);
    ASSERT_TRUE(Import({Source(u"v:1/a.tasm"_s)}, Cloud(u"F/a.tasm"_s)));
    EXPECT_TRUE(tree.Exists(u"cloud/F/a.tasm"_s));
    EXPECT_TRUE(tree.Exists(u"cloud/F/b.tlk"_s));
}

} // namespace Halvern::Test
