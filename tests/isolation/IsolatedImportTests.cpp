// SPDX-License-Identifier: Apache-2.0

#include "CommandFixture.h"

#include <QtCore/QDirIterator>

namespace Halvern::Test {

namespace {

/// The same import with plug-ins in one process and apart.
class IsolatedImport : public CommandFixture
{
protected:
    /// Results without the lines on how long it took, and the cloud folder afterwards.
    struct Answer
    {
        int exitCode;
        QString out;
        FileTree::Snapshot cloud;
        bool operator==(const Answer&) const = default;
    };

    Answer ImportInto(const QString& cloud, const QString& isolate, const QStringList& arguments)
    {
        CommandResult result = Run(
            QStringList{u"import"_s, u"--cloud-folder"_s, tree.Path(cloud), u"--database"_s,
                        tree.Path(cloud + u".db"_s), u"--plugin-path"_s, tree.Path(u"plugins"_s),
                        u"--plugin-path"_s, TestPluginFolder(), u"--isolate"_s, isolate} +
            arguments);
        return {result.exitCode,
                result.out.replace(tree.Path(cloud), u"CLOUD"_s).replace(cloud, u"CLOUD"_s),
                tree.Contents(cloud)};
    }

    void CopyFolder(const QString& from, const QString& to)
    {
        QDirIterator files(from, QDir::Files, QDirIterator::Subdirectories);
        while (files.hasNext()) {
            QFile file(files.next());
            ASSERT_TRUE(file.open(QFile::ReadOnly));
            tree.File(to + file.fileName().mid(from.size()), file.readAll());
        }
    }

    void ExpectTheSame(const QStringList& arguments, int exitCode)
    {
        const Answer together = ImportInto(u"together"_s, u"never"_s, arguments);
        const Answer apart = ImportInto(u"isolated"_s, u"always"_s, arguments);
        EXPECT_EQ(together.exitCode, exitCode) << together.out.toStdString();
        EXPECT_EQ(apart.exitCode, together.exitCode) << apart.out.toStdString();
        EXPECT_EQ(apart.out.toStdString(), together.out.toStdString());
        EXPECT_EQ(apart.cloud, together.cloud);
        EXPECT_GT(apart.cloud.size(), 1);
    }
};

} // namespace

TEST_F(IsolatedImport, OfARealProjectGivesTheSameCopies)
{
    CopyFolder(QStringLiteral(GARDEN_SHED), u"work/shed"_s);
    ExpectTheSame({u"shed"_s, u"--to"_s, u"Shed"_s}, 0);
}

TEST_F(IsolatedImport, WithALayoutGivesTheSameTargets)
{
    RegisterTestLayout(tree, u"plugins"_s);
    tree.File(u"work/top.tasm"_s,
              "link 1 parts/a.tlk\nlink 2 parts/leave.tlk\nlink 3 parts/keepname.tlk\n")
        .File(u"work/parts/a.tlk"_s, "link 1 deep/b.tlk\n")
        .File(u"work/parts/leave.tlk"_s)
        .File(u"work/parts/keepname.tlk"_s)
        .File(u"work/parts/deep/b.tlk"_s);
    ExpectTheSame({u"top.tasm"_s}, 0);
}

TEST_F(IsolatedImport, WithAResolverThatFailsSaysTheSame)
{
    tree.File(u"work/a.tlk"_s, "fail\n")
        .File(u"work/b.tlk"_s, "link 1 c.tlk\n")
        .File(u"work/c.tlk"_s);
    ExpectTheSame({u"a.tlk"_s, u"b.tlk"_s}, 7);
}

} // namespace Halvern::Test
