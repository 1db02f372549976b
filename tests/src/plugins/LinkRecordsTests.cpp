// SPDX-License-Identifier: Apache-2.0

#include "plugins/LinkRecords.h"

#include "FileTree.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

using namespace Halvern::FileLink;
using namespace Qt::StringLiterals;
using Halvern::SyncPlugin::FileLinkInfo;
using Halvern::SyncPlugin::MaxLinkText;
using Halvern::SyncPlugin::WideChar;

TEST(LinkRecords, ARecordKnowsItsSizeAndGivesItsTextsBack)
{
    const FileLinkInfo link = MakeFileLinkInfo(u"ref 1"_s, u"lib/ü.prt"_s);
    EXPECT_EQ(link.size, 1044u);
    EXPECT_EQ(GetReferenceId(link), u"ref 1"_s);
    EXPECT_EQ(GetLinkPath(link), u"lib/ü.prt"_s);
}

TEST(LinkRecords, APathOf300CharactersIsCutToItsFirst259)
{
    QString path;
    for (int i = 0; i < 300; ++i)
        path += QChar(u'a' + i % 26);
    const FileLinkInfo link = MakeFileLinkInfo(path, path);
    EXPECT_EQ(GetLinkPath(link), path.left(259));
    EXPECT_EQ(GetReferenceId(link), path.left(259));
    EXPECT_EQ(link.path[MaxLinkText - 1], WideChar(0));
    EXPECT_EQ(link.referenceId[MaxLinkText - 1], WideChar(0));
}

TEST(LinkRecords, APathOf259CharactersIsKeptWhole)
{
    const QString path(259, u'x');
    EXPECT_EQ(GetLinkPath(MakeFileLinkInfo({}, path)), path);
}

TEST(LinkRecords, AFieldWithoutATerminatingZeroIsReadUpTo259Characters)
{
    FileLinkInfo link{};
    std::fill_n(link.referenceId, MaxLinkText, WideChar('r'));
    std::fill_n(link.path, MaxLinkText, WideChar('p'));
    EXPECT_EQ(GetReferenceId(link), QString(259, u'r'));
    EXPECT_EQ(GetLinkPath(link), QString(259, u'p'));

    TerminateTexts(link);
    EXPECT_EQ(link.referenceId[MaxLinkText - 1], WideChar(0));
    EXPECT_EQ(link.path[MaxLinkText - 1], WideChar(0));
    EXPECT_EQ(link.path[MaxLinkText - 2], WideChar('p'));
}

TEST(LinkRecords, AnEmptyTextIsAZero)
{
    const FileLinkInfo link = MakeFileLinkInfo({}, {});
    EXPECT_EQ(link.referenceId[0], WideChar(0));
    EXPECT_EQ(link.path[0], WideChar(0));
    EXPECT_EQ(ToWideString({}).size(), 0u);
}

} // namespace
