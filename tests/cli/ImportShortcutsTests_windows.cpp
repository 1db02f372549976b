// SPDX-License-Identifier: Apache-2.0

#include "CommandFixture.h"

#include <QtCore/QFile>

namespace Halvern::Test {

namespace {

/// work/p holds shortcuts to a folder, to a file in it and to nothing.
class ImportOfShortcuts : public CommandFixture
{
protected:
    ImportOfShortcuts()
    {
        tree.File(u"elsewhere/e.dat"_qs, "e").Folder(u"work/p"_qs);
        for (const auto& [name, target] :
             {std::pair(u"file"_qs, u"elsewhere/e.dat"_qs),
              std::pair(u"folder"_qs, u"elsewhere"_qs), std::pair(u"nowhere"_qs, u"gone"_qs)})
            EXPECT_TRUE(QFile::link(tree.Path(target), tree.Path(u"work/p/%1.lnk"_qs.arg(name))));
    }
};

} // namespace

TEST_F(ImportOfShortcuts, CopiesThemAsFilesAndNothingTheSecondTime)
{
    const CommandResult first = Import({u"p"_qs});
    EXPECT_EQ(first.exitCode, 0) << ::testing::PrintToString(first);
    const CommandResult second = Import({u"p"_qs});
    EXPECT_EQ(second.exitCode, 0) << ::testing::PrintToString(second);

    for (const QString& name : {u"file.lnk"_qs, u"folder.lnk"_qs, u"nowhere.lnk"_qs}) {
        const QString line = u"p/%1 -> p/%1"_qs.arg(name);
        EXPECT_TRUE(first.Has(u"copied     "_qs + line)) << ::testing::PrintToString(first);
        EXPECT_TRUE(second.Has(u"unchanged  "_qs + line)) << ::testing::PrintToString(second);
        EXPECT_EQ(tree.Read(u"cloud/p/"_qs + name), tree.Read(u"work/p/"_qs + name));
    }
    EXPECT_EQ(first.Lines().size(), 4);
}

TEST_F(ImportOfShortcuts, TakesOneThatIsGivenAsTheFileThatItIs)
{
    const CommandResult result = Import({u"p/folder.lnk"_qs, u"p/nowhere.lnk"_qs});
    EXPECT_EQ(result.exitCode, 0) << ::testing::PrintToString(result);
    EXPECT_EQ(tree.Read(u"cloud/folder.lnk"_qs), tree.Read(u"work/p/folder.lnk"_qs));
    EXPECT_EQ(tree.Read(u"cloud/nowhere.lnk"_qs), tree.Read(u"work/p/nowhere.lnk"_qs));
}

TEST_F(ImportOfShortcuts, MissesOneThatIsNotThere)
{
    EXPECT_EQ(Import({u"p/none.lnk"_qs}).exitCode, 3);
}

} // namespace Halvern::Test
