// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "FileTree.h"
#include "support/PathUtilities.h"

#include <gtest/gtest.h>

namespace Halvern::Test {

using namespace Halvern::FileLink;
using namespace Qt::StringLiterals;

/// A small tree in the folder "t".
class ListFiles : public ::testing::Test
{
protected:
    ListFiles()
    {
        tree.File(u"t/a.prt"_s).File(u"t/b.asm"_s).File(u"t/.hidden"_s);
        tree.File(u"t/sub/c.prt"_s).File(u"t/sub/deep/d.prt"_s);
        tree.File(u"t/.secret/e.prt"_s).Folder(u"t/empty"_s);
    }
    /// Names below "t", in the order of the answer.
    QStringList List(const QString& path, const QString& names, QDir::Filters filters,
                     bool recursive)
    {
        QStringList result;
        for (const QString& entry :
             ListFilesRecursive(tree.Path(path), names, filters, recursive)) {
            EXPECT_TRUE(entry.startsWith(tree.Path(u"t"_s) + u'/')) << entry.toStdString();
            result.append(entry.mid(tree.Path(u"t"_s).size() + 1));
        }
        return result;
    }
    QStringList Sorted(const QString& path, const QString& names, QDir::Filters filters,
                       bool recursive)
    {
        QStringList result = List(path, names, filters, recursive);
        result.sort();
        return result;
    }

    FileTree tree;
};

} // namespace Halvern::Test
