// SPDX-License-Identifier: Apache-2.0

#include "ImporterFixture.h"

#include <QtCore/QDir>

namespace Halvern::Test {

using namespace Qt::Literals::StringLiterals;

/// Sources and targets in every form that a caller may write them.
class IntakeForms : public ImporterFixture
{
protected:
    ~IntakeForms() override { QDir::setCurrent(m_current); }

    bool Initialize(const QStringList& sources, const QString& target, bool targetIsFile = false)
    {
        return importer.Initialize(sources, target, targetIsFile, {}, {});
    }

    FileLinkImporterImp importer{nullptr};

private:
    const QString m_current = QDir::currentPath();
};

TEST_F(IntakeForms, AnExactTargetOutsideTheCloudCacheFolderIsStoredAsItIsWritten)
{
    tree.File(u"src/b.prt"_s);
    const QString target = tree.Path(u"elsewhere"_s) + u"/./y/../x.prt"_s;
    ASSERT_TRUE(Initialize({Source(u"b.prt"_s)}, target, true));
    EXPECT_EQ(Member(importer, u"src/b.prt"_s)->GetTargetFile(), target);
}

TEST_F(IntakeForms, ATargetBelowAFolderIsStoredCleanedHoweverTheFolderIsWritten)
{
    tree.File(u"src/b.prt"_s);
    ASSERT_TRUE(Initialize({Source(u"b.prt"_s)}, tree.Path(u"elsewhere"_s) + u"/./y/.."_s));
    EXPECT_EQ(Targets(importer), QStringList{u"src/b.prt -> elsewhere/b.prt"_s});
}

TEST_F(IntakeForms, ARelativeFileNameIsLookedForInTheCurrentFolderAndMeansTheCloudCacheFolder)
{
    tree.File(u"src/a.tlk"_s);
    ASSERT_TRUE(QDir::setCurrent(Source()));
    ASSERT_TRUE(Initialize({}, u"a.tlk"_s, true));
    EXPECT_EQ(Targets(importer), QStringList{u"cloud/a.tlk -> cloud/a.tlk"_s});
    // Nothing is there, so that the caller's word counts: a folder to which nothing goes.
    ASSERT_TRUE(Initialize({}, u"a.tlk"_s, false));
    EXPECT_TRUE(importer.GetFileSet()->IsEmpty());
    ASSERT_TRUE(QDir::setCurrent(Cloud()));
    EXPECT_FALSE(Initialize({}, u"a.tlk"_s, true));
}

TEST_F(IntakeForms, SeveralSourcesCannotGoToAFileOfThatNameInTheCurrentFolder)
{
    tree.File(u"src/a.tlk"_s).File(u"src/b.tlk"_s).Folder(u"src/F"_s);
    ASSERT_TRUE(QDir::setCurrent(Source()));
    const QStringList sources = {Source(u"a.tlk"_s), Source(u"b.tlk"_s)};
    EXPECT_FALSE(Initialize(sources, u"b.tlk"_s));
    EXPECT_TRUE(Initialize(sources, u"F"_s));
    EXPECT_TRUE(Initialize(sources, u"new"_s));
}

TEST_F(IntakeForms, ANestedFolderIsToldFromASelectedOneWhateverItsLetterCase)
{
    tree.File(u"src/Proj/sub/p.prt"_s).Folder(u"src/Proj/other"_s);
    ASSERT_TRUE(Initialize({Source(u"Proj"_s), Source(u"PROJ/SUB"_s)}, Cloud()));
    EXPECT_FALSE(Member(importer, u"src/Proj/sub"_s)->HasFlag(FileMapping::NestedFolder));
    EXPECT_TRUE(Member(importer, u"src/Proj/other"_s)->HasFlag(FileMapping::NestedFolder));
}

TEST_F(IntakeForms, ASourceThatVanishedCountsAmongTheSelectedPathsOnly)
{
    tree.File(u"src/b.prt"_s);
    ASSERT_TRUE(Initialize({Source(u"gone"_s), Source(u"b.prt"_s), Source(u"gone"_s)},
                           Cloud(u"x.prt"_s), true));
    EXPECT_EQ(Targets(importer), QStringList{u"src/b.prt -> cloud/x.prt"_s});
}

TEST_F(IntakeForms, EveryMappingCarriesTheUserOfTheMoment)
{
    tree.File(u"src/Proj/b.prt"_s);
    settings.authenticationConfigurationId = 12;
    Restart();
    ASSERT_TRUE(Initialize({Source(u"Proj"_s)}, Cloud()));
    for (const FileMappingPointer& file : importer.GetFileSet()->GetFiles())
        EXPECT_EQ(file->GetAuthenticationId(), 12);
}

} // namespace Halvern::Test
