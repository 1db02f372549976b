// SPDX-License-Identifier: Apache-2.0

#include "ImporterFixture.h"

namespace Halvern::Test {

using namespace Qt::Literals::StringLiterals;

class IntakeFlags : public ImporterFixture
{
protected:
    bool Initialize(Global::CopyOption options, const QStringList& fileTypes = {})
    {
        return importer.Initialize({Source(u"Proj"_s)}, Cloud(), false, options, fileTypes);
    }
    FileMapping::FileMappingFlag Flags(const QString& source)
    {
        const FileMappingPointer mapping = Member(importer, source);
        return mapping ? mapping->GetFlag() : FileMapping::NoFlag;
    }

    FileLinkImporterImp importer{nullptr};
};

TEST_F(IntakeFlags, FoldersAreMarkedAndThoseFoundInsideAsNested)
{
    tree.File(u"src/Proj/sub/p.prt"_s);
    ASSERT_TRUE(Initialize({}));
    EXPECT_EQ(Flags(u"src/Proj"_s), FileMapping::Selected | FileMapping::Folder);
    EXPECT_EQ(Flags(u"src/Proj/sub"_s),
              FileMapping::Selected | FileMapping::Folder | FileMapping::NestedFolder);
    EXPECT_EQ(Flags(u"src/Proj/sub/p.prt"_s), FileMapping::Selected);
}

TEST_F(IntakeFlags, AFolderThatIsSelectedItselfIsNotNestedWhereverItIsFound)
{
    tree.File(u"src/Proj/sub/p.prt"_s);
    ASSERT_TRUE(
        importer.Initialize({Source(u"Proj"_s), Source(u"Proj/./sub/"_s)}, Cloud(), false, {}, {}));
    int folders = 0;
    for (const FileMappingPointer& file : importer.GetFileSet()->GetFiles()) {
        EXPECT_FALSE(file->HasFlag(FileMapping::NestedFolder));
        folders += file->HasFlag(FileMapping::Folder);
    }
    EXPECT_EQ(folders, 3);
}

TEST_F(IntakeFlags, EveryCombinationOfOptionsSetsItsFlagsOnFilesAndFolders)
{
    tree.File(u"src/Proj/p.prt"_s);
    for (const bool linksOnly : {false, true})
        for (const bool record : {false, true})
            for (const bool services : {false, true}) {
                Global::CopyOption options = Global::MoveFiles;
                auto expected = FileMapping::Selected | FileMapping::NoFlag;
                if (linksOnly) {
                    options |= Global::LinkedFilesOnly;
                    expected |= FileMapping::NoCopy;
                }
                if (record) {
                    options |= Global::RecordSelectedInDatabase;
                    expected |= FileMapping::IncludeInDatabase;
                }
                if (services) {
                    options |= Global::ServicesCopyOption;
                    expected |= FileMapping::ServicesOption;
                }
                ASSERT_TRUE(Initialize(options));
                EXPECT_EQ(Flags(u"src/Proj/p.prt"_s), expected);
                EXPECT_EQ(Flags(u"src/Proj"_s), expected | FileMapping::Folder);
            }
}

TEST_F(IntakeFlags, FilesAndFoldersOutsideTheTypeListDoNotSupportLinks)
{
    tree.File(u"src/Proj/p.PRT"_s).File(u"src/Proj/t.txt"_s).File(u"src/Proj/README"_s);
    ASSERT_TRUE(Initialize({}, {u"asm"_s, u"prt"_s}));
    EXPECT_EQ(Flags(u"src/Proj/p.PRT"_s), FileMapping::Selected);
    EXPECT_EQ(Flags(u"src/Proj/t.txt"_s),
              FileMapping::Selected | FileMapping::FileLinksNotSupported);
    EXPECT_EQ(Flags(u"src/Proj/README"_s),
              FileMapping::Selected | FileMapping::FileLinksNotSupported);
    EXPECT_EQ(Flags(u"src/Proj"_s),
              FileMapping::Selected | FileMapping::Folder | FileMapping::FileLinksNotSupported);
}

TEST_F(IntakeFlags, WithoutATypeListEveryFileSupportsLinks)
{
    tree.File(u"src/Proj/t.txt"_s);
    ASSERT_TRUE(Initialize({}, {}));
    EXPECT_EQ(Flags(u"src/Proj/t.txt"_s), FileMapping::Selected);
}

} // namespace Halvern::Test
