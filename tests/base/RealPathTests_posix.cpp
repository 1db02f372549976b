// SPDX-License-Identifier: Apache-2.0

#include "BaseFiles.h"
#include "FileTree.h"
#include "base/RealPath.h"

#include <gtest/gtest.h>

#include <QtCore/QFile>

using namespace Halvern;
using namespace Halvern::Test;
using namespace Qt::StringLiterals;

namespace {

struct RealPaths : ::testing::Test
{
    std::filesystem::path In(const QString& name) const { return Native(tree.Path(name)); }
    void Link(const QString& name, const QString& target) const
    {
        ASSERT_TRUE(QFile::link(tree.Path(target), tree.Path(name)));
    }

    FileTree tree;
};

} // namespace

TEST_F(RealPaths, FollowLinksInEveryPartOfThePath)
{
    tree.File(u"real/a/file"_s);
    Link(u"folder"_s, u"real/a"_s);
    Link(u"real/link"_s, u"folder/file"_s);
    EXPECT_EQ(Base::RealPath(In(u"folder/file"_s)), In(u"real/a/file"_s));
    EXPECT_EQ(Base::RealPath(In(u"folder"_s) / "../link"), In(u"real/a/file"_s));
    EXPECT_EQ(Base::RealPath(In(u"real/a"_s)), In(u"real/a"_s));
}

TEST_F(RealPaths, AreEmptyWhereNothingIs)
{
    Link(u"nowhere"_s, u"none"_s);
    Link(u"circle"_s, u"circle"_s);
    for (const QString& name : {u"none"_s, u"nowhere"_s, u"circle"_s})
        EXPECT_TRUE(Base::RealPath(In(name)).empty()) << name.toStdString();
}

TEST_F(RealPaths, AreAskedForOnlyWhereALinkIs)
{
    tree.File(u"real/file"_s);
    Link(u"link"_s, u"real/file"_s);
    Link(u"folder"_s, u"real"_s);
    Link(u"nowhere"_s, u"none"_s);
    for (const QString& name : {u"link"_s, u"folder"_s, u"nowhere"_s})
        EXPECT_TRUE(Base::MayLeadElsewhere(In(name))) << name.toStdString();
    for (const QString& name : {u"real/file"_s, u"folder/file"_s, u"real"_s, u"none"_s})
        EXPECT_FALSE(Base::MayLeadElsewhere(In(name))) << name.toStdString();
}
