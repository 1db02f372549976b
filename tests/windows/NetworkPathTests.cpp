// SPDX-License-Identifier: Apache-2.0

// Jobs with files on a network share. windows/run-wine.sh makes one, which is a folder of this
// machine that has the name of one: the path is what is tested here, not the network.

#include "ReplacingFixture.h"
#include "support/FileOperations.h"

#include <QtCore/QTemporaryDir>

namespace Halvern::Test {

namespace {

class NetworkPaths : public ReplacingFixture
{
protected:
    NetworkPaths() : m_folder(QStringLiteral("//corsync/share/test-XXXXXX"))
    {
        if (!m_folder.isValid())
            throw std::runtime_error("there is no share //corsync/share: " +
                                     m_folder.errorString().toStdString());
    }

    QString OnShare(const QString& name) const { return m_folder.path() + u'/' + name; }
    void WriteOnShare(const QString& name, const QByteArray& content) const
    {
        ASSERT_TRUE(QDir().mkpath(QFileInfo(OnShare(name)).path()));
        QFile file(OnShare(name));
        ASSERT_TRUE(file.open(QIODevice::WriteOnly));
        file.write(content);
    }
    QByteArray ReadOnShare(const QString& name) const
    {
        QFile file(OnShare(name));
        EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << name.toStdString();
        return file.readAll();
    }

private:
    QTemporaryDir m_folder;
};

} // namespace

TEST_F(NetworkPaths, OfSourcesAreImportedWithTheirLinks)
{
    WriteOnShare(QStringLiteral("asm/a.tasm"), "link 1 ../lib/b.tlk\n");
    WriteOnShare(QStringLiteral("lib/b.tlk"), "b");

    EXPECT_TRUE(Import({OnShare(QStringLiteral("asm/a.tasm"))}));

    EXPECT_EQ(tree.Contents(QStringLiteral("cloud")),
              (FileTree::Snapshot{{QStringLiteral("a.tasm"), "link 1 lib/b.tlk\n"},
                                  {QStringLiteral("lib/b.tlk"), "b"}}));
}

TEST_F(NetworkPaths, OfASelectedFolderAreImportedWithEverythingInIt)
{
    WriteOnShare(QStringLiteral("p/sub/a.dat"), "a");

    EXPECT_TRUE(Import({OnShare(QStringLiteral("p"))}));

    EXPECT_EQ(tree.Contents(QStringLiteral("cloud")),
              (FileTree::Snapshot{{QStringLiteral("p/sub/a.dat"), "a"}}));
}

TEST_F(NetworkPaths, InLinksAreFollowedAndRewritten)
{
    WriteOnShare(QStringLiteral("b.tlk"), "b");
    Assembly(QStringLiteral("src/a.tasm"),
             {QStringLiteral("1 ") + OnShare(QStringLiteral("b.tlk"))});

    EXPECT_TRUE(Import({Source(QStringLiteral("a.tasm"))}));

    FileTree::Snapshot cloud = tree.Contents(QStringLiteral("cloud"));
    const QByteArray assembly = cloud.take(QStringLiteral("a.tasm"));
    ASSERT_EQ(cloud.size(), 1);
    EXPECT_EQ(cloud.first(), "b");
    EXPECT_TRUE(assembly.contains("link 1 " + cloud.firstKey().toUtf8() + '\n'))
        << assembly.toStdString();
}

TEST_F(NetworkPaths, OfTheCloudFolderGetCopiesAndRewrittenLinks)
{
    settings.cloudCacheFolder = OnShare(QStringLiteral("cloud"));
    Restart();
    tree.File(QStringLiteral("src/lib/b.tlk"), "b");
    Assembly(QStringLiteral("src/asm/a.tasm"), {QStringLiteral("1 ../lib/b.tlk")});
    log.Clear();
    const QStringList sources = {Source(QStringLiteral("asm/a.tasm"))};

    EXPECT_TRUE(Import(sources, settings.cloudCacheFolder)) << Errors().join(u'\n').toStdString();

    EXPECT_TRUE(ReadOnShare(QStringLiteral("cloud/a.tasm")).contains("link 1 lib/b.tlk\n"));
    EXPECT_EQ(ReadOnShare(QStringLiteral("cloud/lib/b.tlk")), "b");
}

TEST_F(NetworkPaths, AreCopiedOverAndProbedForLocks)
{
    tree.File(QStringLiteral("src/a.dat"), "new");
    WriteOnShare(QStringLiteral("old.dat"), "old");
    const QString name = OnShare(QString(240, u'n'));
    QString error;

    EXPECT_FALSE(FileLink::CopyFileBytes(Source(QStringLiteral("a.dat")),
                                         OnShare(QStringLiteral("old.dat")), &error));
    EXPECT_EQ(error, QStringLiteral("Destination file exists"));
    EXPECT_TRUE(FileLink::CopyFileBytes(Source(QStringLiteral("a.dat")), name, &error))
        << error.toStdString();
    EXPECT_FALSE(FileLink::IsFileLocked(name));
    EXPECT_TRUE(FileLink::FlushToDisk(name, &error)) << error.toStdString();

    QFile open(name);
    EXPECT_TRUE(open.open(QIODevice::ReadOnly));
    EXPECT_EQ(open.readAll(), "new");
}

} // namespace Halvern::Test
