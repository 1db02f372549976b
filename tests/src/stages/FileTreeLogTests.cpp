// SPDX-License-Identifier: Apache-2.0

#include "CopyingFixture.h"

namespace Halvern::Test {

using namespace Qt::StringLiterals;

namespace {

/// Copies what was added and looks at the lines of the two trees.
class FileTreeLog : public CopyingFixture
{
protected:
    FileMappingPointer AddFile(const QString& name, const QStringList& links,
                               FileMappingFlag flags = FileMapping::NoFlag)
    {
        tree.File("src/" + name, "");
        FileLinkList list;
        for (const QString& path : links)
            list.append(Link(QString::number(list.size() + 1), path));
        return Add("src/" + name, name, flags, list);
    }
    QStringList Tree(const QString& header)
    {
        QStringList lines;
        bool inside = false;
        for (const QString& line : Lines()) {
            if (line == "DEBUG " + header)
                inside = true;
            else if (inside && line.startsWith("DEBUG ") && line.contains('/'))
                lines.append(line.mid(6));
            else if (inside)
                break;
        }
        return lines;
    }
    QStringList SourceTree()
    {
        EXPECT_TRUE(importer->CopyFiles());
        return Tree("***Source file tree***");
    }
    QString Source(const QString& name) const { return tree.Path("src/" + name); }
};

} // namespace

TEST_F(FileTreeLog, EachLevelIsIndentedByFourMoreHyphens)
{
    AddFile("a.tlk", {"b.tlk"}, FileMapping::Selected);
    AddFile("b.tlk", {"c.tlk"});
    AddFile("c.tlk", {"d.tlk"});
    AddFile("d.tlk", {});
    EXPECT_EQ(SourceTree(),
              (QStringList{Source("a.tlk") + " (Selected)", "--->" + Source("b.tlk"),
                           "------->" + Source("c.tlk"), "----------->" + Source("d.tlk")}));
}

TEST_F(FileTreeLog, AFileMetAgainIsMarkedAndNotExpanded)
{
    AddFile("Frame.tlk", {"Bracket.tlk", "Bolt.tlk"}, FileMapping::Selected);
    AddFile("Bracket.tlk", {"Bolt.tlk"});
    AddFile("Bolt.tlk", {"Nut.tlk"});
    AddFile("Nut.tlk", {});
    EXPECT_EQ(SourceTree(),
              (QStringList{Source("Frame.tlk") + " (Selected)", "--->" + Source("Bracket.tlk"),
                           "------->" + Source("Bolt.tlk"), "----------->" + Source("Nut.tlk"),
                           "--->" + Source("Bolt.tlk") + " (processed already)"}));
}

TEST_F(FileTreeLog, AFileMetInAnotherLetterCaseIsTheSameFile)
{
    AddFile("a.tlk", {"b.tlk"}, FileMapping::Selected);
    AddFile("b.tlk", {});
    AddPaths(Source("B.TLK"), Cloud("b2.tlk"));
    EXPECT_EQ(SourceTree(), (QStringList{Source("a.tlk") + " (Selected)", "--->" + Source("b.tlk"),
                                         Source("B.TLK") + " (processed already)"}));
}

TEST_F(FileTreeLog, NamesThatOnlyLookAlikeWhenFoldedAreTwoFiles)
{
    AddFile("a.tlk", {"Maße.tlk", "Masse.tlk"}, FileMapping::Selected);
    AddFile("Maße.tlk", {});
    AddFile("Masse.tlk", {});
    EXPECT_EQ(SourceTree(),
              (QStringList{Source("a.tlk") + " (Selected)", "--->" + Source("Maße.tlk"),
                           "--->" + Source("Masse.tlk")}));
}

TEST_F(FileTreeLog, ACycleEndsWhereItCloses)
{
    AddFile("a.tlk", {"b.tlk"}, FileMapping::Selected);
    AddFile("b.tlk", {"a.tlk"});
    EXPECT_TRUE(importer->CopyFiles());
    const QStringList lines = Lines();
    // The circular reference is reported while the tree is built, before its first line.
    const qsizetype header = lines.indexOf("DEBUG ***Source file tree***");
    ASSERT_GT(header, 0);
    EXPECT_EQ(lines[header - 1], "INFO Circular reference detected. File link " + Source("a.tlk") +
                                     " in " + Source("b.tlk") + " leads to circular reference.");
    EXPECT_EQ(Tree("***Source file tree***"),
              (QStringList{Source("a.tlk") + " (Selected)", "--->" + Source("b.tlk"),
                           "------->" + Source("a.tlk") + " (processed already)"}));
}

TEST_F(FileTreeLog, TheTargetTreeShowsTargetsByTargetLinks)
{
    AddFile("a.tlk", {"b.tlk"}, FileMapping::Selected);
    const auto b = AddFile("b.tlk", {});
    b->SetTargetFile(Cloud("lib/b.tlk"), true);
    EXPECT_TRUE(importer->CopyFiles());
    EXPECT_EQ(Tree("***Target file tree***"),
              (QStringList{Cloud("a.tlk") + " (Selected, Copied)",
                           "--->" + Cloud("lib/b.tlk") + " (Copied)"}));
}

TEST_F(FileTreeLog, ANodeWithoutATargetIsLeftOutWithItsSubtree)
{
    const auto a = AddFile("a.tlk", {"b.tlk"}, FileMapping::Selected);
    a->SetTargetFile(QString(), true);
    AddFile("b.tlk", {});
    const auto c = AddFile("c.tlk", {}, FileMapping::Selected);
    // Without a target the file keeps the target links that it had.
    a->SetTargetFileLinks({Link("1", Cloud("b.tlk"))});
    EXPECT_TRUE(importer->CopyFiles());
    EXPECT_EQ(Tree("***Target file tree***"), QStringList{Cloud("c.tlk") + " (Selected, Copied)"});
    EXPECT_EQ(Tree("***Source file tree***"),
              (QStringList{Source("a.tlk") + " (Selected)", "--->" + Source("b.tlk"),
                           Source("c.tlk") + " (Selected)"}));
}

TEST_F(FileTreeLog, EachDumpStartsOverWithItsMarks)
{
    AddFile("a.tlk", {}, FileMapping::Selected);
    EXPECT_TRUE(importer->CopyFiles());
    EXPECT_EQ(Tree("***Source file tree***"), QStringList{Source("a.tlk") + " (Selected)"});
    EXPECT_EQ(Tree("***Target file tree***"), QStringList{Cloud("a.tlk") + " (Selected, Copied)"});
    log.Clear();
    EXPECT_TRUE(importer->CopyFiles());
    EXPECT_EQ(Tree("***Source file tree***"), QStringList{Source("a.tlk") + " (Selected, Copied)"});
}

TEST_F(FileTreeLog, WithDebugOffNoTreeIsBuiltOrWritten)
{
    AddFile("a.tlk", {"b.tlk"}, FileMapping::Selected);
    AddFile("b.tlk", {"a.tlk"});
    log.SetLevel("CorsyncFileLink", 20000);
    EXPECT_TRUE(importer->CopyFiles());
    // Building it would report the circular reference at INFO.
    EXPECT_EQ(Lines(), (QStringList{"INFO Begin copying files",
                                    "INFO Finished copying files. Copied: 2, Folders created: 0, "
                                    "Failed: 0, Skipped: 0, Total: 2",
                                    "INFO Finished copying files"}));
}

TEST_F(FileTreeLog, SharedSubTreesAreWrittenOnce)
{
    const int levels = 20;
    for (int i = 0; i < levels; ++i) {
        const QString next = u"%1.tlk"_s.arg(i + 1);
        AddFile(u"%1.tlk"_s.arg(i), {next, next},
                i == 0 ? FileMapping::Selected : FileMapping::NoFlag);
    }
    AddFile(u"%1.tlk"_s.arg(levels), {});
    EXPECT_EQ(SourceTree().size(), 2 * levels + 1);
}

} // namespace Halvern::Test
