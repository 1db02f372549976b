// SPDX-License-Identifier: Apache-2.0

#include "CommandFixture.h"

#include <QtCore/QFile>

namespace Halvern::Test {

using namespace Qt::StringLiterals;

namespace {

/// work/p holds shortcuts to a folder, to a file in it and to nothing.
class ImportOfShortcuts : public CommandFixture
{
protected:
    ImportOfShortcuts()
    {
        tree.File(u"elsewhere/e.dat"_s, "e").Folder(u"work/p"_s);
        for (const auto& [name, target] :
             {std::pair(u"file"_s, u"elsewhere/e.dat"_s), std::pair(u"folder"_s, u"elsewhere"_s),
              std::pair(u"nowhere"_s, u"gone"_s)})
            EXPECT_TRUE(QFile::link(tree.Path(target), tree.Path(u"work/p/%1.lnk"_s.arg(name))));
    }
};

} // namespace

TEST_F(ImportOfShortcuts, CopiesThemAsFilesAndNothingTheSecondTime)
{
    const CommandResult first = Import({u"p"_s});
    EXPECT_EQ(first.exitCode, 0) << ::testing::PrintToString(first);
    const CommandResult second = Import({u"p"_s});
    EXPECT_EQ(second.exitCode, 0) << ::testing::PrintToString(second);

    for (const QString& name : {u"file.lnk"_s, u"folder.lnk"_s, u"nowhere.lnk"_s}) {
        const QString line = u"p/%1 -> p/%1"_s.arg(name);
        EXPECT_TRUE(first.Has(u"copied     "_s + line)) << ::testing::PrintToString(first);
        EXPECT_TRUE(second.Has(u"unchanged  "_s + line)) << ::testing::PrintToString(second);
        EXPECT_EQ(tree.Read(u"cloud/p/"_s + name), tree.Read(u"work/p/"_s + name));
    }
    // The files, the formats that nobody reads, and the summary.
    EXPECT_EQ(first.Lines().size(), 5);
}

TEST_F(ImportOfShortcuts, TakesOneThatIsGivenAsTheFileThatItIs)
{
    const CommandResult result = Import({u"p/folder.lnk"_s, u"p/nowhere.lnk"_s});
    EXPECT_EQ(result.exitCode, 0) << ::testing::PrintToString(result);
    EXPECT_EQ(tree.Read(u"cloud/folder.lnk"_s), tree.Read(u"work/p/folder.lnk"_s));
    EXPECT_EQ(tree.Read(u"cloud/nowhere.lnk"_s), tree.Read(u"work/p/nowhere.lnk"_s));
}

TEST_F(ImportOfShortcuts, MissesOneThatIsNotThere)
{
    EXPECT_EQ(Import({u"p/none.lnk"_s}).exitCode, 3);
}

} // namespace Halvern::Test
