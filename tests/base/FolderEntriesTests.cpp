// SPDX-License-Identifier: Apache-2.0

#include "BaseFiles.h"
#include "FileTree.h"
#include "base/Directory.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <map>
#include <stdexcept>

namespace Halvern::Test {

using namespace Qt::StringLiterals;

TEST(FolderEntries, SayWhatTheyAre)
{
    FileTree tree;
    tree.File(u"p/H\u00f6he.prt"_s).Folder(u"p/sub"_s);
    std::map<std::string, Base::EntryKind> kinds;
    EXPECT_TRUE(Base::VisitEntries(Native(tree.Path(u"p"_s)), [&](Base::FolderEntry&& entry) {
        EXPECT_TRUE(entry.isText);
        EXPECT_FALSE(entry.isHidden);
        return kinds.emplace(entry.name, entry.kind).second;
    }));
    EXPECT_EQ(kinds,
              (std::map<std::string, Base::EntryKind>{{"H\u00f6he.prt", Base::EntryKind::File},
                                                      {"sub", Base::EntryKind::Folder}}));
    const Base::FolderEntry one = Base::ReadEntry(Native(tree.Path(u"p/H\u00f6he.prt"_s)));
    EXPECT_EQ(one.name, "H\u00f6he.prt");
    EXPECT_EQ(one.kind, Base::EntryKind::File);
    EXPECT_EQ(Base::ReadEntry(Native(tree.Path(u"p"_s))).kind, Base::EntryKind::Folder);
    EXPECT_EQ(Base::ReadEntry(Native(tree.Path(u"p/none"_s))).kind, Base::EntryKind::Missing);
}

TEST(FolderEntries, AreVisitedAsLongAsTheyAreWanted)
{
    FileTree tree;
    tree.File(u"p/a"_s).File(u"p/b"_s).File(u"p/c"_s);
    int count = 0;
    EXPECT_TRUE(Base::VisitEntries(Native(tree.Path(u"p"_s)),
                                   [&](Base::FolderEntry&&) { return ++count < 2; }));
    EXPECT_EQ(count, 2);
    EXPECT_THROW((void)Base::VisitEntries(
                     Native(tree.Path(u"p"_s)),
                     [](Base::FolderEntry&&) -> bool { throw std::runtime_error("enough"); }),
                 std::runtime_error);
}

TEST(FolderEntries, AreAFailureWhereThereAreNone)
{
    FileTree tree;
    tree.File(u"file"_s).Folder(u"empty"_s);
    const auto nothing = [](Base::FolderEntry&&) { return false; };
    EXPECT_TRUE(Base::VisitEntries(Native(tree.Path(u"empty"_s)), nothing));
    for (const QString& name : {u"none"_s, u"file"_s}) {
        const Base::FileResult result = Base::VisitEntries(Native(tree.Path(name)), nothing);
        EXPECT_FALSE(result) << name.toStdString();
        EXPECT_FALSE(result.Text().empty());
    }
}

TEST(FolderEntries, OfWindowsAreLinksByTheirReparseTag)
{
    constexpr std::uint32_t reparsePoint = 0x400;
    for (const std::uint32_t link : {0xA000000CU, 0xA0000003U, 0xA000001DU}) {
        EXPECT_TRUE(Base::IsLinkOfWindows(reparsePoint | 0x10, link)) << std::hex << link;
        EXPECT_TRUE(Base::IsLinkOfWindows(reparsePoint, link)) << std::hex << link;
        EXPECT_FALSE(Base::IsLinkOfWindows(0x10, link)) << "the field holds anything";
    }
    // OneDrive, deduplication, a compressed file.
    for (const std::uint32_t other : {0x9000001AU, 0x9000101AU, 0x80000013U, 0x80000017U})
        EXPECT_FALSE(Base::IsLinkOfWindows(reparsePoint, other)) << std::hex << other;
}

} // namespace Halvern::Test
