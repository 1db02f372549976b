// SPDX-License-Identifier: Apache-2.0

// Jobs with files on a network share. windows/run-wine.sh makes one, which is a folder of this
// machine that has the name of one: the path is what is tested here, not the network.

#include "ReplacingFixture.h"
#include "support/FileOperations.h"

#include <QtCore/QTemporaryDir>

namespace Halvern::Test {

using namespace Qt::StringLiterals;

namespace {

class NetworkPaths : public ReplacingFixture
{
protected:
    NetworkPaths() : m_folder(u"//corsync/share/test-XXXXXX"_s)
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
    WriteOnShare(u"asm/a.tasm"_s, "link 1 ../lib/b.tlk\n");
    WriteOnShare(u"lib/b.tlk"_s, "b");

    EXPECT_TRUE(Import({OnShare(u"asm/a.tasm"_s)}));

    EXPECT_EQ(tree.Contents(u"cloud"_s),
              (FileTree::Snapshot{{u"a.tasm"_s, "link 1 lib/b.tlk\n"}, {u"lib/b.tlk"_s, "b"}}));
}

TEST_F(NetworkPaths, OfASelectedFolderAreImportedWithEverythingInIt)
{
    WriteOnShare(u"p/sub/a.dat"_s, "a");

    EXPECT_TRUE(Import({OnShare(u"p"_s)}));

    EXPECT_EQ(tree.Contents(u"cloud"_s), (FileTree::Snapshot{{u"p/sub/a.dat"_s, "a"}}));
}

TEST_F(NetworkPaths, InLinksAreFollowedAndRewritten)
{
    WriteOnShare(u"b.tlk"_s, "b");
    Assembly(u"src/a.tasm"_s, {u"1 "_s + OnShare(u"b.tlk"_s)});

    EXPECT_TRUE(Import({Source(u"a.tasm"_s)}));

    FileTree::Snapshot cloud = tree.Contents(u"cloud"_s);
    const QByteArray assembly = cloud.take(u"a.tasm"_s);
    ASSERT_EQ(cloud.size(), 1);
    EXPECT_EQ(cloud.first(), "b");
    EXPECT_TRUE(assembly.contains("link 1 " + cloud.firstKey().toUtf8() + '\n'))
        << assembly.toStdString();
}

TEST_F(NetworkPaths, OfTheCloudFolderGetCopiesAndRewrittenLinks)
{
    settings.cloudCacheFolder = OnShare(u"cloud"_s);
    Restart();
    tree.File(u"src/lib/b.tlk"_s, "b");
    Assembly(u"src/asm/a.tasm"_s, {u"1 ../lib/b.tlk"_s});
    log.Clear();
    const QStringList sources = {Source(u"asm/a.tasm"_s)};

    EXPECT_TRUE(Import(sources, settings.cloudCacheFolder)) << Errors().join(u'\n').toStdString();

    EXPECT_TRUE(ReadOnShare(u"cloud/a.tasm"_s).contains("link 1 lib/b.tlk\n"));
    EXPECT_EQ(ReadOnShare(u"cloud/lib/b.tlk"_s), "b");
}

TEST_F(NetworkPaths, AreCopiedOverAndProbedForLocks)
{
    tree.File(u"src/a.dat"_s, "new");
    WriteOnShare(u"old.dat"_s, "old");
    const QString name = OnShare(QString(240, u'n'));
    QString error;

    EXPECT_FALSE(FileLink::CopyFileBytes(Source(u"a.dat"_s), OnShare(u"old.dat"_s), &error));
    EXPECT_EQ(error, u"Destination file exists"_s);
    EXPECT_TRUE(FileLink::CopyFileBytes(Source(u"a.dat"_s), name, &error)) << error.toStdString();
    EXPECT_FALSE(FileLink::IsFileLocked(name));
    EXPECT_TRUE(FileLink::FlushToDisk(name, &error)) << error.toStdString();

    QFile open(name);
    EXPECT_TRUE(open.open(QIODevice::ReadOnly));
    EXPECT_EQ(open.readAll(), "new");
}

} // namespace Halvern::Test
