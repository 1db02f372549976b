// SPDX-License-Identifier: Apache-2.0

#include "Mappings.h"
#include "fileset/FileMappingRef.h"

#include <gtest/gtest.h>

#include <QtCore/QMap>

namespace {

using namespace Halvern;
using namespace Halvern::FileLink;
using namespace Halvern::Test;
using namespace Qt::StringLiterals;

/// Plug-in bit by plug-in bit, in numbers: the contract.
const QMap<quint32, quint32> fromPlugin{
    {0x1, 0x1},   {0x2, 0x2},    {0x4, 0x4},     {0x8, 0x8},     {0x10, 0x10},     {0x20, 0x20},
    {0x40, 0x40}, {0x80, 0x200}, {0x100, 0x400}, {0x200, 0x100}, {0x400, 0x20000}, {0x800, 0x10000},
};
constexpr quint32 ReadOnlyBits = 0x69;
const QMap<quint32, quint32> toPlugin{
    {0x1, 0x1},   {0x2, 0x2},     {0x4, 0x4},    {0x8, 0x8},     {0x20, 0x20},
    {0x40, 0x40}, {0x100, 0x200}, {0x200, 0x80}, {0x400, 0x100},
};

class EveryFlagBit : public ::testing::TestWithParam<int>
{
protected:
    const quint32 bit = quint32(1) << GetParam();
    FileMappingPointer mapping = MakeFile(u"D:/none/a.prt"_s);
    FileMappingRef node{QString(), QString(), mapping};
};

TEST_P(EveryFlagBit, OfAPlugInSetsItsMappingFlagOnlyWhenPlugInsMay)
{
    const quint32 expected = bit & ReadOnlyBits ? 0 : fromPlugin.value(bit, 0);
    node.SetFlag(bit, true);
    EXPECT_EQ(quint32(mapping->GetFlag()), expected);
}

TEST_P(EveryFlagBit, OfAPlugInClearsItsMappingFlagOnlyWhenPlugInsMay)
{
    const quint32 expected = bit & ReadOnlyBits ? 0 : fromPlugin.value(bit, 0);
    mapping->SetFlagAll(FileMappingFlag(0xffffffff));
    node.SetFlag(bit, false);
    EXPECT_EQ(quint32(mapping->GetFlag()), ~expected);
}

TEST_P(EveryFlagBit, OfAPlugInAsksForItsMappingFlag)
{
    const quint32 flag = fromPlugin.value(bit, 0);
    EXPECT_EQ(node.HasFlag(bit), flag == 0);
    mapping->SetFlagAll(FileMappingFlag(flag));
    EXPECT_TRUE(node.HasFlag(bit));
    mapping->SetFlagAll(FileMappingFlag(~flag));
    EXPECT_EQ(node.HasFlag(bit), flag == 0) << "a bit without a meaning asks for nothing";
}

TEST_P(EveryFlagBit, OfAMappingIsReportedAsTheContractSays)
{
    mapping->SetFlagAll(FileMappingFlag(bit));
    EXPECT_EQ(node.GetFlag(), toPlugin.value(bit, 0));
}

INSTANTIATE_TEST_SUITE_P(Bits, EveryFlagBit, ::testing::Range(0, 32));

class MappingFlags : public ::testing::Test
{
protected:
    FileMappingPointer mapping = MakeFile(u"D:/none/a.prt"_s);
    FileMappingRef node{QString(), QString(), mapping};
};

TEST_F(MappingFlags, ThatPlugInsMayNotSetDoNotKeepOthersFromBeingSet)
{
    node.SetFlag(0x1 | 0x200, true);
    EXPECT_EQ(mapping->GetFlag(), FileMapping::SkipFileLinks);
}

TEST_F(MappingFlags, CollisionAndSelectedAskedForByAPlugInChangeNothing)
{
    node.SetFlag(SyncPlugin::MappingCollision | SyncPlugin::MappingSelected, true);
    EXPECT_EQ(mapping->GetFlag(), FileMapping::NoFlag);
    mapping->SetFlagAll(FileMapping::Collision | FileMapping::Selected);
    node.SetFlag(SyncPlugin::MappingCollision | SyncPlugin::MappingSelected, false);
    EXPECT_EQ(mapping->GetFlag(), FileMapping::Collision | FileMapping::Selected);
}

TEST_F(MappingFlags, ThatAreNotReportedCanStillBeAskedFor)
{
    mapping->SetFlagAll(FileMapping::NoCopy | FileMapping::FileLinksNotSupported);
    EXPECT_EQ(node.GetFlag(), 0u);
    EXPECT_TRUE(node.HasFlag(0x400));
}

TEST_F(MappingFlags, AskedForTogetherMustAllBeSet)
{
    mapping->SetFlagAll(FileMapping::Selected);
    EXPECT_FALSE(node.HasFlag(SyncPlugin::MappingSelected | SyncPlugin::MappingFolder));
    mapping->SetFlag(FileMapping::Folder, true);
    EXPECT_TRUE(node.HasFlag(SyncPlugin::MappingSelected | SyncPlugin::MappingFolder));
}

TEST_F(MappingFlags, AllAtOnceAreTranslatedBitByBit)
{
    node.SetFlag(0xffffffff, true);
    EXPECT_EQ(quint32(mapping->GetFlag()), 0x30716u);
    mapping->SetFlagAll(FileMappingFlag(0xffffffff));
    EXPECT_EQ(node.GetFlag(), 0x3efu);
    EXPECT_TRUE(node.HasFlag(0xffffffff));
}

TEST(MappingFlagsWithoutAMapping, AreNone)
{
    FileMappingRef node(QString(), QString(), nullptr);
    node.SetFlag(0xffffffff, true);
    EXPECT_EQ(node.GetFlag(), 0u);
    EXPECT_FALSE(node.HasFlag(0x1));
    EXPECT_FALSE(node.HasFlag(0));
}

} // namespace
