// SPDX-License-Identifier: Apache-2.0

#include "SelectionFixture.h"

#include <QtCore/QFile>

#include <windows.h>

namespace Halvern::Test {

using namespace Jobs;
using namespace Qt::StringLiterals;

namespace {

class SelectionWalkOnWindows : public SelectionOnDisk
{};

} // namespace

TEST_F(SelectionWalkOnWindows, TakesShortcutsAsTheFilesThatTheyAre)
{
    tree.File(u"w/elsewhere/e.dat"_s, "e").File(u"w/p/a.prt"_s);
    ASSERT_TRUE(QFile::link(tree.Path(u"w/elsewhere"_s), tree.Path(u"w/p/folder.lnk"_s)));
    ASSERT_TRUE(QFile::link(tree.Path(u"w/gone"_s), tree.Path(u"w/p/nowhere.lnk"_s)));
    EXPECT_EQ(Names({u"p"_s, u"p/folder.lnk"_s}),
              (QStringList{u"p/"_s, u"p/a.prt"_s, u"p/folder.lnk"_s, u"p/nowhere.lnk"_s,
                           u"folder.lnk"_s}));
    EXPECT_EQ(LeftOut({u"p"_s}), QStringList());
}

TEST_F(SelectionWalkOnWindows, SaysWhatHasTheAttributeOfHiddenFiles)
{
    tree.File(u"w/p/a.prt"_s).File(u"w/p/b.prt"_s).Folder(u"w/p/sub"_s);
    for (const QString& name : {u"w/p/a.prt"_s, u"w/p/sub"_s})
        ASSERT_TRUE(
            ::SetFileAttributesW(tree.Path(name).toStdWString().c_str(), FILE_ATTRIBUTE_HIDDEN));
    QStringList hidden;
    for (const SelectedEntry& entry : List({u"p"_s}).entries)
        if (entry.isHidden)
            hidden.append(entry.name);
    EXPECT_EQ(hidden, (QStringList{u"p/a.prt"_s, u"p/sub"_s}));
}

TEST_F(SelectionWalkOnWindows, ReadsPatternsWithoutRegardToLetterCase)
{
    tree.File(u"w/p/.CorsyncIgnore"_s, "*.BAK\r\n").File(u"w/p/a.bak"_s).File(u"w/p/b.prt"_s);
    EXPECT_EQ(Names({u"p"_s}), (QStringList{u"p/"_s, u"p/b.prt"_s}));
}

TEST_F(SelectionWalkOnWindows, ListsFoldersWithLongPaths)
{
    const QString deep = (QString(60, u'd') + u'/').repeated(6);
    tree.File(u"w/p/"_s + deep + u"a.prt"_s);
    const QStringList names = Names({u"p"_s});
    ASSERT_EQ(names.size(), 8);
    EXPECT_EQ(names.last(), u"p/"_s + deep + u"a.prt"_s);
}

} // namespace Halvern::Test
