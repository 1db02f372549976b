// SPDX-License-Identifier: Apache-2.0

#include "CommandFixture.h"
#include "FileLock.h"

namespace Halvern::Test {

using namespace Qt::StringLiterals;

namespace {

/// The copy of work/top.tlk is in place; the part that it links gets another name in the next
/// import, because it was changed on both sides.
class ImportWhileACopyIsOpen : public CommandFixture
{
protected:
    ImportWhileACopyIsOpen()
    {
        tree.File(u"work/top.tlk"_s, "link 1 part.tlk\n").File(u"work/part.tlk"_s, "v1\n");
        EXPECT_EQ(Import({u"top.tlk"_s}).exitCode, 0);
        tree.File(u"work/part.tlk"_s, "version 2\n").File(u"cloud/part.tlk"_s, "somebody's\n");
    }
    QByteArray Top() const { return tree.Read(u"cloud/top.tlk"_s); }
};

} // namespace

TEST_F(ImportWhileACopyIsOpen, DefersTheLinksAndTheNextImportRewritesThem)
{
    const QStringList arguments{u"top.tlk"_s, u"--on-conflict"_s, u"rename"_s};
    {
        const FileLock lock(tree.Path(u"cloud/top.tlk"_s));
        const CommandResult result = Import(arguments);
        EXPECT_EQ(result.exitCode, 5);
        EXPECT_TRUE(result.out.startsWith(
            u"locked     top.tlk -> top.tlk: its links are still to be rewritten"_s))
            << ::testing::PrintToString(result);
        EXPECT_EQ(Top(), "link 1 part.tlk\n");
        // Still open: nothing is lost by trying again.
        EXPECT_EQ(Import(arguments).exitCode, 5);
        EXPECT_EQ(Top(), "link 1 part.tlk\n");
    }
    const CommandResult result = Import(arguments);
    EXPECT_EQ(result.exitCode, 0) << ::testing::PrintToString(result);
    EXPECT_EQ(Top(), "link 1 part (2).tlk\n");
    const PluginCallLog calls;
    EXPECT_EQ(Import(arguments).exitCode, 0);
    EXPECT_EQ(calls.Calls(), QStringList());
}

} // namespace Halvern::Test
