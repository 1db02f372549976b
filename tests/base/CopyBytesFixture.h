// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "BaseFiles.h"
#include "FileTree.h"

#include <QtCore/QDir>

#include <gtest/gtest.h>

namespace Halvern::Test {

using namespace Qt::StringLiterals;

/// More than two buffers, and no multiple of one.
inline constexpr int SeveralBuffers = 3 * 256 * 1024 + 17;

/// Copies in a tree with the folders "in" and "out".
class CopyBytes : public ::testing::Test
{
protected:
    CopyBytes() { tree.File(u"in/a.prt"_s, u"content"_s.toUtf8()).Folder(u"out"_s); }

    bool Copy(const QString& source, const QString& target)
    {
        error.clear();
        return CopyFileBytes(tree.Path(source), tree.Path(target), &error);
    }
    /// A refused copy leaves both folders as they were.
    void ExpectRefusal(const QString& source, const QString& target, const QString& reason)
    {
        const QStringList before = Names();
        EXPECT_FALSE(Copy(source, target));
        EXPECT_EQ(error, reason);
        EXPECT_EQ(Names(), before);
    }
    QStringList Names()
    {
        const QDir::Filters all =
            QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot;
        return QDir(tree.Path(u"in"_s)).entryList(all) + QDir(tree.Path(u"out"_s)).entryList(all);
    }

    FileTree tree;
    QString error;
};

} // namespace Halvern::Test
