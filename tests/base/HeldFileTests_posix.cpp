// SPDX-License-Identifier: Apache-2.0

#include "FileTree.h"
#include "OrdinaryRights.h"

#include "base/FileAttributes.h"
#include "base/HeldFile.h"

#include <QtCore/QFile>

#include <gtest/gtest.h>

#include <sys/stat.h>

namespace {

using namespace Halvern::Base;
using namespace Halvern::Test;
using namespace Qt::StringLiterals;

} // namespace

TEST(HeldFilesOnPosix, AreNoLinksAndNoPipes)
{
    FileTree tree;
    tree.File(u"file"_s);
    ASSERT_TRUE(QFile::link(tree.Path(u"file"_s), tree.Path(u"link"_s)));
    ASSERT_TRUE(QFile::link(tree.Path(u"gone"_s), tree.Path(u"nowhere"_s)));
    ASSERT_EQ(::mkfifo(tree.Path(u"pipe"_s).toUtf8().constData(), 0600), 0);
    HeldFile held;
    for (const QString& name : {u"link"_s, u"nowhere"_s, u"pipe"_s}) {
        const FileResult refused = held.Hold(tree.Path(name).toStdString());
        EXPECT_FALSE(refused) << name.toStdString();
        EXPECT_FALSE(refused.IsHeld());
    }
    EXPECT_FALSE(tree.Exists(u"gone"_s));
}

TEST(HeldFilesOnPosix, AreMadeForTheirOwnerAlone)
{
    FileTree tree;
    HeldFile held;
    ASSERT_TRUE(held.Hold(tree.Path(u"lock"_s).toStdString()));
    EXPECT_FALSE(QFile::permissions(tree.Path(u"lock"_s)) &
                 (QFile::ReadGroup | QFile::ReadOther | QFile::WriteGroup | QFile::WriteOther));
}

TEST(HeldFilesOnPosix, AFolderWithoutTheRightToWriteTakesNoFiles)
{
    FileTree tree;
    tree.Folder(u"folder"_s);
    const std::string folder = tree.Path(u"folder"_s).toStdString();
    const OrdinaryRights rights;
    EXPECT_TRUE(MayAddTo(folder));
    ASSERT_EQ(::chmod(folder.c_str(), 0500), 0);
    EXPECT_FALSE(MayAddTo(folder));
    ASSERT_EQ(::chmod(folder.c_str(), 0600), 0);
    EXPECT_FALSE(MayAddTo(folder)) << "names in it cannot be reached";
    ASSERT_EQ(::chmod(folder.c_str(), 0700), 0);
}
