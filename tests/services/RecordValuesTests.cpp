// SPDX-License-Identifier: Apache-2.0

#include "syncservices/FileMapping.h"
#include "syncservices/Global.h"
#include "syncservices/SyncItem.h"

#include <gtest/gtest.h>

namespace {

using namespace Halvern::SyncServices;
using namespace Qt::StringLiterals;

struct FlagValue
{
    quint32 value;
    FileMapping::FileMappingFlag flag;
    const char* name;
};

constexpr FlagValue flagValues[] = {
    {0x00001, FileMapping::Selected, "Selected"},
    {0x00002, FileMapping::Folder, "Folder"},
    {0x00004, FileMapping::NestedFolder, "NestedFolder"},
    {0x00008, FileMapping::Unchanged, "Unchanged"},
    {0x00010, FileMapping::SameSourceAndTarget, "SameSourceAndTarget"},
    {0x00020, FileMapping::Collision, "Collision"},
    {0x00040, FileMapping::SourceMissing, "SourceMissing"},
    {0x00080, FileMapping::NoCopy, "NoCopy"},
    {0x00100, FileMapping::SkipFileLinks, "SkipFileLinks"},
    {0x00200, FileMapping::NotFilePath, "NotFilePath"},
    {0x00400, FileMapping::RenameOnCollision, "RenameOnCollision"},
    {0x00800, FileMapping::NeedsRepath, "NeedsRepath"},
    {0x01000, FileMapping::Repathed, "Repathed"},
    {0x02000, FileMapping::Copied, "Copied"},
    {0x04000, FileMapping::ServicesOption, "ServicesOption"},
    {0x08000, FileMapping::IncludeInDatabase, "IncludeInDatabase"},
    {0x10000, FileMapping::KeepTargetName, "KeepTargetName"},
    {0x20000, FileMapping::FileLinksNotSupported, "FileLinksNotSupported"},
};

TEST(RecordValues, OfEveryMappingFlagAreThoseThatHostsRead)
{
    for (const FlagValue& row : flagValues) {
        EXPECT_EQ(quint32(row.flag), row.value) << row.name;
        FileMapping mapping(u"a"_s, QString(), 7);
        mapping.SetFlagAll(FileMapping::FileMappingFlag(row.value));
        EXPECT_EQ(mapping.GetFlagName(), QString::fromLatin1(row.name));
    }
}

TEST(RecordValues, OfEveryCopyOptionAreThoseThatHostsStore)
{
    EXPECT_EQ(quint32(Global::MoveFiles), 0x1u);
    EXPECT_EQ(quint32(Global::LinkedFilesOnly), 0x2u);
    EXPECT_EQ(quint32(Global::UpdateSelectedInDatabase), 0x4u);
    EXPECT_EQ(quint32(Global::KeepExistingLinkedFiles), 0x400u);
    EXPECT_EQ(quint32(Global::RenameLinkedFiles), 0x800u);
    EXPECT_EQ(quint32(Global::KeepExistingSelectedFiles), 0x1000u);
    EXPECT_EQ(quint32(Global::RenameSelectedFiles), 0x2000u);
    EXPECT_EQ(quint32(Global::DirectLinksOnly), 0x4000u);
    EXPECT_EQ(quint32(Global::RecordSelectedInDatabase), 0x8000u);
    EXPECT_EQ(quint32(Global::ServicesCopyOption), 0x10000u);
    EXPECT_EQ(int(Global::LocalPath), 0);
}

TEST(RecordValues, OfTheSyncOptionsAreThoseInTheDatabase)
{
    EXPECT_EQ(quint32(SyncItem::SkipFileLinks), 0x40u);
    EXPECT_EQ(quint32(SyncItem::ImportLinkedFiles), 0x80u);
    EXPECT_EQ(quint32(SyncItem::KeepExistingLinkedFiles), 0x100u);
    EXPECT_EQ(quint32(SyncItem::RenameLinkedFiles), 0x200u);
    EXPECT_EQ(quint32(SyncItem::RepathPending), 0x400u);
}

TEST(RecordValues, AFlagWordIsTakenWholeWithBitsThatHaveNoName)
{
    FileMapping mapping(u"a"_s, QString(), 7);
    mapping.SetFlagAll(FileMapping::FileMappingFlag(0xffffffffu));
    EXPECT_EQ(quint32(mapping.GetFlag()), 0xffffffffu);
    mapping.SetFlag(FileMapping::FileMappingFlag(0x3ffffu), false);
    EXPECT_EQ(quint32(mapping.GetFlag()), 0xfffc0000u);
    EXPECT_EQ(mapping.GetFlagName(), QString());
}

TEST(RecordValues, ANewLinkIsUnresolvedAndHoldsItsFieldsInOrder)
{
    const FileLink link;
    EXPECT_EQ(link.ItemId, -1);
    EXPECT_EQ(link, (FileLink{-1, QString(), QString(), QString()}));
    const FileLink filled{3, u"ref"_s, u"path"_s, u"cloud"_s};
    EXPECT_EQ(filled.RefId, u"ref"_s);
    EXPECT_EQ(filled.Path, u"path"_s);
    EXPECT_EQ(filled.CloudItemId, u"cloud"_s);
}

} // namespace
