// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "BaseFiles.h"
#include "FileTree.h"
#include "base/FileHandle.h"
#include "base/RootedFolder.h"

#include <gtest/gtest.h>

#include <map>
#include <set>

namespace Halvern::Test {

using namespace Qt::StringLiterals;
using Base::Existing;
using Base::FileKind;
using Base::FileProblem;

/// An open folder "cloud" beside a folder "outside".
class RootedFolders : public ::testing::Test
{
protected:
    RootedFolders()
    {
        tree.Folder(u"cloud"_s).File(u"outside/x.prt"_s, "outside");
        EXPECT_TRUE(root.Open(Native(tree.Path(u"cloud"_s))));
    }

    FileKind Kind(const QString& relative) const
    {
        Base::FileStatus status;
        const Base::FileResult result = root.Status(Native(relative), status);
        EXPECT_TRUE(result) << result.Text();
        return status.kind;
    }
    std::set<std::string> Names(const QString& folder) const
    {
        std::vector<std::filesystem::path> names;
        const Base::FileResult result = root.List(Native(folder), names);
        EXPECT_TRUE(result) << result.Text();
        std::set<std::string> texts;
        for (const std::filesystem::path& name : names)
            EXPECT_TRUE(texts.insert(Base::PathToUtf8(name)).second) << name;
        return texts;
    }
    Base::FileResult Move(const QString& from, const QString& to, Existing existing) const
    {
        return root.Move(Native(from), Native(to), existing);
    }
    std::string Read(const QString& relative) const
    {
        Base::Handle handle = Base::NoHandle;
        const Base::FileResult opened = root.OpenForReading(Native(relative), handle);
        EXPECT_TRUE(opened) << opened.Text();
        std::string content(4096, '\0');
        std::size_t got = 0;
        EXPECT_TRUE(Base::ReadSome(handle, 0, content.data(), content.size(), got));
        Base::Close(handle);
        content.resize(got);
        return content;
    }
    /// All that is in the tree; links are not followed.
    std::map<std::string, std::string> Entries() const
    {
        std::map<std::string, std::string> entries;
        const std::filesystem::path top = Native(tree.Path());
        for (const auto& entry : std::filesystem::recursive_directory_iterator(top)) {
            std::string& content = entries[entry.path().lexically_relative(top).generic_string()];
            if (entry.is_symlink())
                content = "leads to " + read_symlink(entry.path()).generic_string();
            else if (entry.is_regular_file())
                content =
                    "holds " +
                    tree.Read(QString::fromStdString(entry.path().lexically_relative(top).string()))
                        .toStdString();
        }
        return entries;
    }
    /// What every operation answers for a path that must not be taken.
    void ExpectRefused(const QString& path, FileProblem problem)
    {
        SCOPED_TRACE(path.toStdString());
        const std::filesystem::path way = Native(path);
        const std::map<std::string, std::string> before = Entries();
        Base::FileStatus status;
        std::vector<std::filesystem::path> names;
        Base::Handle handle = Base::NoHandle;
        EXPECT_EQ(root.Status(way, status).Problem(), problem);
        EXPECT_EQ(root.List(way, names).Problem(), problem);
        EXPECT_EQ(root.MakeFolders(way).Problem(), problem);
        EXPECT_EQ(root.MakePrivateFolder(way).Problem(), problem);
        EXPECT_EQ(root.Move(way, "new", Existing::Keep).Problem(), problem);
        EXPECT_EQ(root.Move("a.prt", way, Existing::Keep).Problem(), problem);
        EXPECT_EQ(root.Move("a.prt", way, Existing::Replace).Problem(), problem);
        EXPECT_EQ(root.Remove(way).Problem(), problem);
        EXPECT_EQ(root.RemoveFolder(way).Problem(), problem);
        EXPECT_EQ(root.OpenForReading(way, handle).Problem(), problem);
        EXPECT_EQ(root.Flush(way).Problem(), problem);
        EXPECT_EQ(handle, Base::NoHandle);
        EXPECT_EQ(Entries(), before);
    }

    FileTree tree;
    Base::RootedFolder root;
};

} // namespace Halvern::Test
