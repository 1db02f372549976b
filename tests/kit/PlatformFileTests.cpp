// SPDX-License-Identifier: Apache-2.0

#include "FileTree.h"

#include "kit/PlatformFile.h"
#include "pluginkit/FilePaths.h"
#include "pluginkit/LinkPaths.h"
#include "pluginkit/ReplacementFile.h"
#include "pluginkit/Utf.h"

#include <gtest/gtest.h>

#include <QtCore/QFile>

#include <set>

namespace Halvern::Test {

using namespace PluginKit;
using namespace Qt::StringLiterals;

namespace {

class PlatformFile : public ::testing::Test
{
protected:
    std::filesystem::path Path(const QString& name = {}) const
    {
        return PathFromUtf8(tree.Path(name).toStdString());
    }
    std::set<std::string> Names(const QString& folder) const
    {
        std::set<std::string> names;
        Platform::VisitNames(Path(folder), [&](const std::string& name) {
            EXPECT_TRUE(names.insert(name).second) << name;
            return true;
        });
        return names;
    }

    FileTree tree;
    /// Far more than 260 characters.
    const QString deep = (QString(60, u'd') + u'/').repeated(6);
};

} // namespace

TEST_F(PlatformFile, AFileAndAFolderAreToldApart)
{
    tree.File(u"Höhe.png"_s).Folder(u"folder"_s);
    EXPECT_TRUE(Platform::Exists(Path(u"Höhe.png"_s)));
    EXPECT_TRUE(Platform::IsFile(Path(u"Höhe.png"_s)));
    EXPECT_FALSE(Platform::IsFolder(Path(u"Höhe.png"_s)));
    EXPECT_TRUE(Platform::Exists(Path(u"folder"_s)));
    EXPECT_FALSE(Platform::IsFile(Path(u"folder"_s)));
    EXPECT_TRUE(Platform::IsFolder(Path(u"folder"_s)));
}

TEST_F(PlatformFile, WhatIsNotThereIsNeither)
{
    for (const char16_t* const name : {u"none", u"none/a", u"*", u"f?lder", u"folder/a"}) {
        tree.Folder(u"folder"_s);
        const std::filesystem::path path = Path(QString::fromUtf16(name));
        EXPECT_FALSE(Platform::Exists(path)) << path;
        EXPECT_FALSE(Platform::IsFile(path)) << path;
        EXPECT_FALSE(Platform::IsFolder(path)) << path;
        EXPECT_FALSE(Platform::IsSameFile(path, path)) << path;
        Platform::Remove(path);
    }
    EXPECT_EQ(tree.Contents(), (FileTree::Snapshot{{u"folder/"_s, ""}}));
}

TEST_F(PlatformFile, AFileIsTheSameHoweverItIsReached)
{
    tree.File(u"a/x.stp"_s).File(u"a/y.stp"_s).Folder(u"b"_s);
    EXPECT_TRUE(Platform::IsSameFile(Path(u"a/x.stp"_s), Path() / "b" / ".." / "a" / "x.stp"));
    EXPECT_FALSE(Platform::IsSameFile(Path(u"a/x.stp"_s), Path(u"a/y.stp"_s)));
    EXPECT_FALSE(Platform::IsSameFile(Path(u"a/x.stp"_s), Path(u"a/z.stp"_s)));
}

TEST_F(PlatformFile, AFolderShowsFilesFoldersAndWhatIsHidden)
{
    tree.File(u"a/Höhe.png"_s).File(u"a/.hidden"_s).Folder(u"a/b.kicad_pro"_s).Folder(u"empty"_s);
    EXPECT_EQ(Names(u"a"_s), (std::set<std::string>{".hidden", "Höhe.png", "b.kicad_pro"}));
    EXPECT_EQ(Names(u"empty"_s), std::set<std::string>());
    EXPECT_EQ(Names(u"none"_s), std::set<std::string>());
    EXPECT_EQ(Names(u"a/Höhe.png"_s), std::set<std::string>());
}

TEST_F(PlatformFile, NoMoreNamesAreShownThanWanted)
{
    tree.File(u"a"_s).File(u"b"_s).File(u"c"_s);
    int count = 0;
    Platform::VisitNames(Path(), [&](const std::string&) { return ++count < 2; });
    EXPECT_EQ(count, 2);
}

TEST_F(PlatformFile, AReadOnlyFileIsRemoved)
{
    tree.File(u"a"_s);
    ASSERT_TRUE(QFile::setPermissions(tree.Path(u"a"_s), QFile::ReadOwner));
    Platform::Remove(Path(u"a"_s));
    EXPECT_FALSE(tree.Exists(u"a"_s));
}

TEST_F(PlatformFile, EverythingWorksOnLongPaths)
{
    tree.File(deep + u"a.gltf"_s, "old").File(deep + u"b.bin"_s);
    const std::filesystem::path folder = Path(deep);
    EXPECT_TRUE(Platform::IsFolder(folder));
    EXPECT_TRUE(NamesExistingFile("b.bin", folder));
    EXPECT_TRUE(Platform::IsSameFile(folder / "a.gltf", folder / "a.gltf"));
    EXPECT_EQ(Names(deep), (std::set<std::string>{"a.gltf", "b.bin"}));
    {
        InputFile source(folder / "a.gltf");
        ReplacementFile replacement(source);
        replacement.Write("new");
        replacement.Commit();
    }
    EXPECT_EQ(tree.Read(deep + u"a.gltf"_s), "new");
    {
        InputFile source(folder / "b.bin");
        ReplacementFile dropped(source);
    }
    EXPECT_EQ(Names(deep), (std::set<std::string>{"a.gltf", "b.bin"}));
}

// Windows takes long paths as they are: a ".." in one would be the name of a folder.
TEST_F(PlatformFile, ALongPathThroughTheFolderAboveIsFound)
{
    tree.File(deep + u"lib/b.bin"_s, "b").Folder(deep + u"models"_s);
    const std::filesystem::path folder = Path(deep + u"models"_s);
    EXPECT_TRUE(NamesExistingFile("../lib/b.bin", folder));
    EXPECT_TRUE(NamesFolder("./../lib", folder));
    EXPECT_EQ(InputFile(PathIn(folder, "../lib/b.bin")).Read(0, 1), "b");
}

TEST_F(PlatformFile, APathIsTakenFromItsFolderUnlessItIsAbsolute)
{
    const std::filesystem::path folder = Path(u"folder"_s);
    EXPECT_EQ(PathIn(folder, "../a.png"), folder / "../a.png");
    EXPECT_EQ(NormalPath(PathIn(folder, "../a.png")), Path(u"a.png"_s).make_preferred());
    EXPECT_EQ(PathIn(folder, tree.Path(u"b.png"_s).toStdString()), Path(u"b.png"_s));
    EXPECT_TRUE(IsAbsolutePath(folder));
    EXPECT_FALSE(IsAbsolutePath("folder/a.png"));
}

} // namespace Halvern::Test
