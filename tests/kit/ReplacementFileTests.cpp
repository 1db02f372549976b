// SPDX-License-Identifier: Apache-2.0

#include "FileTree.h"

#include "pluginkit/FormatError.h"
#include "pluginkit/ReplacementFile.h"
#include "pluginkit/Utf.h"

#include <gtest/gtest.h>

#include <QtCore/QFile>

namespace Halvern::Test {

using namespace PluginKit;
using namespace Qt::StringLiterals;

namespace {

class Replacement : public ::testing::Test
{
protected:
    std::filesystem::path Path(const QString& name) const
    {
        return PathFromUtf8(tree.Path(name).toStdString());
    }

    FileTree tree;
};

std::string MessageOf(const std::function<void()>& work)
{
    try {
        work();
    } catch (const FormatError& error) {
        return error.what();
    }
    return {};
}

} // namespace

TEST_F(Replacement, CommitPutsTheNewContentInPlaceAndLeavesNothingBeside)
{
    tree.File(u"Höhe.gltf"_s, "old");
    InputFile source(Path(u"Höhe.gltf"_s));
    ReplacementFile replacement(source);
    replacement.Write("new ");
    replacement.Write("content");
    EXPECT_EQ(tree.Read(u"Höhe.gltf"_s), "old");
    replacement.Commit();
    EXPECT_EQ(tree.Contents(), (FileTree::Snapshot{{u"Höhe.gltf"_s, "new content"}}));
}

TEST_F(Replacement, WithoutCommitTheOriginalStaysAndTheTemporaryGoes)
{
    tree.File(u"a.gltf"_s, "old");
    {
        InputFile source(Path(u"a.gltf"_s));
        ReplacementFile replacement(source);
        replacement.Write("new");
        EXPECT_EQ(QDir(tree.Path()).entryList(QDir::Files | QDir::Hidden).size(), 2);
    }
    EXPECT_EQ(tree.Contents(), (FileTree::Snapshot{{u"a.gltf"_s, "old"}}));
}

TEST_F(Replacement, CopiesPartsLargerThanItsBufferByteForByte)
{
    const qint64 size = 3 * qint64(ReplacementFile::CopyBufferSize) + 17;
    const QByteArray content = PatternBytes(size);
    tree.File(u"a.glb"_s, content);
    InputFile source(Path(u"a.glb"_s));
    ReplacementFile replacement(source);
    replacement.Write("head");
    replacement.CopyFromSource(5, static_cast<std::uint64_t>(size - 6));
    replacement.Commit();
    EXPECT_EQ(tree.Read(u"a.glb"_s), "head" + content.mid(5, size - 6));
}

TEST_F(Replacement, AChangeByAnotherHandSinceReadingIsNotOverwritten)
{
    tree.File(u"a.gltf"_s, "old");
    InputFile source(Path(u"a.gltf"_s));
    EXPECT_EQ(MessageOf([&] {
                  ReplacementFile replacement(source);
                  replacement.Write("new");
                  tree.File(u"a.gltf"_s, "theirs");
                  replacement.Commit();
              }),
              "the file was changed by someone else meanwhile");
    EXPECT_EQ(tree.Contents(), (FileTree::Snapshot{{u"a.gltf"_s, "theirs"}}));
}

TEST_F(Replacement, WhenAReadOnlyOriginalWasChangedMeanwhileNoReadOnlyTemporaryIsLeft)
{
    const QString name = u"a.gltf"_s;
    tree.File(name, "old");
    InputFile source(Path(name));
    EXPECT_EQ(MessageOf([&] {
                  ReplacementFile replacement(source);
                  replacement.Write("new");
                  tree.File(name, "theirs");
                  ASSERT_TRUE(QFile::setPermissions(tree.Path(name), QFile::ReadOwner));
                  replacement.Commit();
              }),
              "the file was changed by someone else meanwhile");
    EXPECT_EQ(tree.Contents(), (FileTree::Snapshot{{name, "theirs"}}));
    EXPECT_TRUE(QFile::setPermissions(tree.Path(name), QFile::ReadOwner | QFile::WriteOwner));
}

TEST_F(Replacement, AFileThatShrinksWhileItIsCopiedFails)
{
    tree.File(u"a.glb"_s, PatternBytes(1000));
    InputFile source(Path(u"a.glb"_s));
    tree.File(u"a.glb"_s, PatternBytes(500));
    EXPECT_EQ(MessageOf([&] {
                  ReplacementFile replacement(source);
                  replacement.CopyFromSource(0, 1000);
              }),
              "the file ends unexpectedly");
    EXPECT_EQ(tree.Contents(), (FileTree::Snapshot{{u"a.glb"_s, PatternBytes(500)}}));
}

TEST_F(Replacement, PermissionsAreKept)
{
    tree.File(u"a.gltf"_s, "old");
    const QFile::Permissions wanted =
        QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner | QFile::ReadGroup;
    ASSERT_TRUE(QFile::setPermissions(tree.Path(u"a.gltf"_s), wanted));
    const QFile::Permissions before = QFile::permissions(tree.Path(u"a.gltf"_s));
    InputFile source(Path(u"a.gltf"_s));
    ReplacementFile replacement(source);
    replacement.Write("new");
    replacement.Commit();
    EXPECT_EQ(QFile::permissions(tree.Path(u"a.gltf"_s)), before);
}

TEST_F(Replacement, AFileThatIsNotThereCannotBeOpened)
{
    EXPECT_EQ(MessageOf([&] {
                  InputFile file(Path(u"none.gltf"_s));
              }).rfind("the file cannot be opened: ", 0),
              0U);
}

TEST_F(Replacement, ReadingBeyondTheEndIsRefusedBeforeMemoryIsTaken)
{
    tree.File(u"a.glb"_s, "0123456789");
    const InputFile file(Path(u"a.glb"_s));
    EXPECT_EQ(file.Read(4, 6), "456789");
    EXPECT_EQ(MessageOf([&] { file.Read(4, std::uint64_t(1) << 60); }),
              "the file ends unexpectedly");
    EXPECT_EQ(MessageOf([&] { file.Read(11, 0); }), "the file ends unexpectedly");
}

} // namespace Halvern::Test
