// SPDX-License-Identifier: Apache-2.0

#include "CopyingFixture.h"

#include <QtTest/QSignalSpy>

#include <algorithm>

namespace Halvern::Test {

namespace {

class Repathing : public CopyingFixture
{
protected:
    Repathing() { calls.Clear(); }

    /// A file of the cloud folder with one link, whose mapping says what the link must become.
    FileMappingPointer AddCopy(const QString& name, const QString& newPath,
                               FileMappingFlag flags = FileMapping::Selected | FileMapping::Copied,
                               const QByteArray& more = {})
    {
        tree.File("src/" + name, "").File("cloud/" + name, LinkText({{"1", "old.tlk"}}) + more);
        const auto mapping = Add("src/" + name, name, flags);
        mapping->SetTargetFileLinks({Link("1", newPath)});
        return mapping;
    }
    QString Call(const QString& name, const QString& newPath) const
    {
        return "RepathFileLinks " + Cloud(name) + " [1=" + newPath + "]";
    }
    bool WasTried(const FileMappingPointer& mapping) const
    {
        return mapping->HasFlag(FileMapping::Repathed) &&
               !mapping->HasFlag(FileMapping::NeedsRepath);
    }

    PluginCallLog calls;
};

} // namespace

TEST_F(Repathing, RewritesTheLinksOfACopy)
{
    const auto mapping = AddCopy("a.tlk", "lib/b.tlk", FileMapping::Copied, "content\n");
    QSignalSpy modified(importer.get(), &FileLinkImporterImp::FileModified);
    EXPECT_TRUE(importer->RepathFiles());
    EXPECT_EQ(tree.Read("cloud/a.tlk"), "link 1 lib/b.tlk\ncontent\n");
    EXPECT_TRUE(WasTried(mapping));
    ASSERT_EQ(modified.size(), 1);
    EXPECT_EQ(modified[0][0].toString(), Cloud("a.tlk"));
    EXPECT_EQ(calls.Calls(), QStringList{Call("a.tlk", "lib/b.tlk")});
}

TEST_F(Repathing, LogsTheStageTheFileAndEachLink)
{
    AddCopy("a.tlk", "b.tlk");
    log.SetLevel("CorsyncFileLink", 10000);
    EXPECT_TRUE(importer->RepathFiles());
    QStringList lines = Lines();
    lines.removeIf(
        [](const QString& line) { return line.contains("plugin", Qt::CaseInsensitive); });
    EXPECT_EQ(lines, (QStringList{"INFO Begin repathing file links in target",
                                  "INFO Repathing file " + Cloud("a.tlk"),
                                  "DEBUG File link: Path: b.tlk RefId: 1",
                                  "INFO Finished repathing file links in target"}));
}

TEST_F(Repathing, ASetWithoutFilesThatSupportLinksSucceedsWithoutAWord)
{
    AddCopy("a.tlk", "b.tlk", FileMapping::Copied | FileMapping::FileLinksNotSupported);
    tree.Folder("src/F");
    Add("src/F", "F", FileMapping::Selected | FileMapping::Folder);
    EXPECT_TRUE(importer->RepathFiles());
    EXPECT_TRUE(Lines().isEmpty());
    EXPECT_TRUE(calls.Calls().isEmpty());
}

TEST_F(Repathing, AnEmptySetSucceedsWithoutAWord)
{
    EXPECT_TRUE(importer->RepathFiles());
    EXPECT_TRUE(Lines().isEmpty());
}

TEST_F(Repathing, WithoutASetFailsWithinTheStageFrame)
{
    importer = std::make_unique<FileLinkImporterImp>(controller);
    log.Clear();
    EXPECT_FALSE(importer->RepathFiles());
    EXPECT_EQ(Lines(), (QStringList{"INFO Begin repathing file links in target",
                                    "INFO Finished repathing file links in target"}));
}

TEST_F(Repathing, AnUnsupportedTypeIsPassedOverAndSaidSo)
{
    const auto unsupported =
        AddCopy("a.tlk", "b.tlk", FileMapping::Copied | FileMapping::FileLinksNotSupported);
    AddCopy("b.tlk", "c.tlk");
    EXPECT_TRUE(importer->RepathFiles());
    EXPECT_TRUE(log.Has("DEBUG Repathing skipped for file " + tree.Path("src/a.tlk") +
                        ". File links not supported for this file type."));
    EXPECT_FALSE(unsupported->HasFlagAny(FileMapping::NeedsRepath | FileMapping::Repathed));
    EXPECT_EQ(calls.Calls(), QStringList{Call("b.tlk", "c.tlk")});
}

TEST_F(Repathing, AFileThatStaysButLinksACopiedFileIsRepathedInPlace)
{
    const auto stays = AddCopy("a.tlk", "lib/b.tlk", FileMapping::Selected);
    stays->SetSourceFileLinks({Link("0", "missing.tlk"), Link("1", "b.tlk")});
    Add("src/b.tlk", "lib/b.tlk", FileMapping::Copied);
    tree.File("cloud/lib/b.tlk", "");
    EXPECT_TRUE(importer->RepathFiles());
    EXPECT_TRUE(WasTried(stays));
    EXPECT_EQ(tree.Read("cloud/a.tlk"), "link 1 lib/b.tlk\n");
}

TEST_F(Repathing, AFileThatStaysAndLinksOnlyFilesThatStayIsLeftAlone)
{
    const auto stays = AddCopy("a.tlk", "lib/b.tlk", FileMapping::Selected);
    stays->SetSourceFileLinks({Link("1", "b.tlk")});
    const auto linked = Add("src/b.tlk", "lib/b.tlk", FileMapping::NoFlag);
    linked->SetSourceFileLinks({Link("1", "c.tlk")});
    Add("src/c.tlk", "lib/c.tlk", FileMapping::Copied);
    tree.File("cloud/lib/b.tlk", "").File("cloud/lib/c.tlk", "");
    EXPECT_TRUE(importer->RepathFiles());
    // b.tlk links the copied c.tlk; a.tlk reaches it only through b.tlk.
    EXPECT_FALSE(stays->HasFlagAny(FileMapping::NeedsRepath | FileMapping::Repathed));
    EXPECT_TRUE(WasTried(linked));
}

TEST_F(Repathing, FoldersAreNeverMarked)
{
    tree.Folder("src/F").Folder("cloud/F");
    const auto folder =
        Add("src/F", "F", FileMapping::Selected | FileMapping::Folder | FileMapping::Copied);
    AddCopy("a.tlk", "b.tlk");
    EXPECT_TRUE(importer->RepathFiles());
    EXPECT_FALSE(folder->HasFlagAny(FileMapping::NeedsRepath | FileMapping::Repathed));
    EXPECT_TRUE(importer->RepathFile(folder));
}

TEST_F(Repathing, AFileMarkedEarlierIsTriedAgainThoughNothingWasCopied)
{
    const auto mapping = AddCopy("a.tlk", "b.tlk", FileMapping::NeedsRepath);
    EXPECT_TRUE(importer->RepathFiles());
    EXPECT_TRUE(WasTried(mapping));
}

TEST_F(Repathing, AnEmptyLinkListCountsAsSuccessAndIsRemembered)
{
    tree.File("src/a.tlk", "").File("cloud/a.tlk", "content");
    const auto mapping = Add("src/a.tlk", "a.tlk", FileMapping::Copied);
    QSignalSpy modified(importer.get(), &FileLinkImporterImp::FileModified);
    EXPECT_TRUE(importer->RepathFiles());
    EXPECT_TRUE(
        log.Has("DEBUG Repathing skipped for file " + Cloud("a.tlk") + ". No links found."));
    EXPECT_TRUE(WasTried(mapping));
    EXPECT_TRUE(modified.isEmpty());
    EXPECT_TRUE(calls.Calls().isEmpty());
    importer.reset();
    ASSERT_EQ(Database().GetFileCopyHistoryByAuthenticationId(7).size(), 1);
}

TEST_F(Repathing, AMissingTargetFailsAndKeepsItsMark)
{
    const auto missing = AddCopy("a.tlk", "b.tlk");
    tree.Remove("cloud/a.tlk");
    const auto other = AddCopy("b.tlk", "c.tlk");
    EXPECT_FALSE(importer->RepathFiles());
    EXPECT_TRUE(
        log.Has("ERROR Failed to repath file links in " + Cloud("a.tlk") + ". File not found."));
    EXPECT_TRUE(missing->HasFlag(FileMapping::NeedsRepath));
    EXPECT_FALSE(missing->HasFlag(FileMapping::Repathed));
    EXPECT_TRUE(WasTried(other));
}

TEST_F(Repathing, APluginThatFailsIsNotTriedAgainAndTheOthersGoOn)
{
    const auto failing = AddCopy("a.tlk", "b.tlk", FileMapping::Copied, "norepath\n");
    const auto other = AddCopy("b.tlk", "c.tlk");
    QSignalSpy modified(importer.get(), &FileLinkImporterImp::FileModified);
    EXPECT_FALSE(importer->RepathFiles());
    EXPECT_TRUE(WasTried(failing));
    EXPECT_TRUE(WasTried(other));
    ASSERT_EQ(modified.size(), 1);
    EXPECT_EQ(modified[0][0].toString(), Cloud("b.tlk"));
    EXPECT_EQ(tree.Read("cloud/a.tlk"), "link 1 old.tlk\nnorepath\n");
    EXPECT_TRUE(log.Has("ERROR Failed to repath file links in file " + Cloud("a.tlk") +
                        ". Plugin returned false."));
    importer.reset();
    EXPECT_EQ(Database().GetFileCopyHistoryByAuthenticationId(7).size(), 2);
}

TEST_F(Repathing, APluginThatThrowsFailsAndTheOthersGoOn)
{
    const auto failing = AddCopy("a.tlk", "b.tlk", FileMapping::Copied, "throwrepath\n");
    const auto other = AddCopy("b.tlk", "c.tlk");
    EXPECT_FALSE(importer->RepathFiles());
    EXPECT_TRUE(WasTried(failing));
    EXPECT_TRUE(WasTried(other));
    EXPECT_TRUE(log.Has("ERROR Plugin " + TestResolverModule() +
                        " threw an exception in RepathFileLinks: test resolver: told to throw"));
    EXPECT_EQ(tree.Read("cloud/b.tlk"), "link 1 c.tlk\n");
}

TEST_F(Repathing, AReadOnlyCopyIsWritableForThePluginAndReadOnlyAgainAfterwards)
{
    for (const QByteArray& content :
         {QByteArray(), QByteArray("norepath\n"), QByteArray("throwrepath\n")}) {
        SCOPED_TRACE(content.toStdString());
        Restart();
        AddCopy("a.tlk", "b.tlk", FileMapping::Copied, content);
        QFile::setPermissions(Cloud("a.tlk"), QFile::ReadOwner | QFile::ReadGroup);
        EXPECT_EQ(importer->RepathFiles(), content.isEmpty());
        EXPECT_EQ(tree.Read("cloud/a.tlk").startsWith("link 1 b.tlk"), content.isEmpty());
        EXPECT_FALSE(QFile::permissions(Cloud("a.tlk")) & QFile::WriteOwner);
        EXPECT_FALSE(log.Has("INFO Repathing skipped for file " + Cloud("a.tlk") +
                             ". File is locked. File will be repathed after it is unlocked."));
        tree.Remove("cloud/a.tlk");
    }
}

TEST_F(Repathing, TheDateOfTheRewrittenFileIsTheDateOfItsLinks)
{
    const auto mapping = AddCopy("a.tlk", "b.tlk");
    tree.Touch("cloud/a.tlk", QDateTime::fromSecsSinceEpoch(1'500'000'000));
    EXPECT_TRUE(importer->RepathFiles());
    EXPECT_GT(tree.Modified("cloud/a.tlk").toSecsSinceEpoch(), 1'600'000'000);
    EXPECT_EQ(mapping->GetTargetFileLinksExtractedAtFileDate(), tree.Modified("cloud/a.tlk"));
    EXPECT_EQ(mapping->GetTargetFileLastModified(), tree.Modified("cloud/a.tlk"));
    EXPECT_EQ(mapping->GetSourceFileLastModified(), tree.Modified("src/a.tlk"));
}

TEST_F(Repathing, AFileOfATypeWithoutAPluginCountsAsRewritten)
{
    tree.File("src/a.prt", "").File("cloud/a.prt", "content");
    const auto mapping = Add("src/a.prt", "a.prt", FileMapping::Copied);
    mapping->SetTargetFileLinks({Link("1", "b.prt")});
    QSignalSpy modified(importer.get(), &FileLinkImporterImp::FileModified);
    EXPECT_TRUE(importer->RepathFiles());
    EXPECT_TRUE(WasTried(mapping));
    EXPECT_EQ(modified.size(), 1);
    EXPECT_EQ(tree.Read("cloud/a.prt"), "content");
}

TEST_F(Repathing, TextsLongerThanARecordReachThePluginAsTheirFirst259Characters)
{
    const QString path = QString(300, u'p');
    const QString refId = QString(300, u'r');
    tree.File("src/a.tlk", "").File("cloud/a.tlk", LinkText({{QString(259, u'r'), "old"}}));
    const auto mapping = Add("src/a.tlk", "a.tlk", FileMapping::Copied);
    mapping->SetTargetFileLinks({Link(refId, path)});
    EXPECT_TRUE(importer->RepathFiles());
    EXPECT_EQ(calls.Calls(), QStringList{"RepathFileLinks " + Cloud("a.tlk") + " [" +
                                         refId.left(259) + "=" + path.left(259) + "]"});
    EXPECT_TRUE(log.Has("DEBUG File link: Path: " + path.left(259) + " RefId: " + refId.left(259)));
}

TEST_F(Repathing, OneFileByPathSaysWhatItIsMissing)
{
    EXPECT_FALSE(importer->RepathFile(Cloud("gone.tlk"), FileLinkList{Link("1", "x")}));
    EXPECT_EQ(Lines(), QStringList{"ERROR Failed to repath file " + Cloud("gone.tlk") +
                                   ". File not found."});
}

TEST_F(Repathing, OneFileByPathIsRewritten)
{
    tree.File("cloud/a.tlk", LinkText({{"1", "x"}, {"2", "y"}}));
    QSignalSpy modified(importer.get(), &FileLinkImporterImp::FileModified);
    EXPECT_TRUE(importer->RepathFile(Cloud("a.tlk"), FileLinkList{Link("2", "z")}));
    EXPECT_EQ(tree.Read("cloud/a.tlk"), LinkText({{"1", "x"}, {"2", "z"}}));
    EXPECT_EQ(modified.size(), 1);
}

} // namespace Halvern::Test
