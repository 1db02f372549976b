// SPDX-License-Identifier: Apache-2.0

#include "CommandFixture.h"

#include <QtCore/QFile>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Halvern::Test {

using namespace Qt::StringLiterals;

namespace {

constexpr int Patience = 60000;

class LinksOfManyFiles : public CommandFixture
{};

} // namespace

TEST_F(LinksOfManyFiles, AreShownWhileTheNextFileIsStillBeingRead)
{
    tree.File(u"work/a.tlk"_s, "link 1 b.tlk\n");
    const QByteArray pipe = QFile::encodeName(tree.Path(u"work/b.tlk"_s));
    ASSERT_EQ(mkfifo(pipe.constData(), 0600), 0);
    QProcess process;
    Prepare(process, {u"links"_s, u"--plugin-path"_s, tree.Path(u"plugins"_s), u"--plugin-path"_s,
                      TestPluginFolder(), u"a.tlk"_s, u"b.tlk"_s});
    process.start();
    // Opening the pipe waits until the command, too, has opened it.
    EXPECT_TRUE(process.waitForReadyRead(Patience)) << "nothing came before the second file";
    EXPECT_TRUE(process.peek(10000).contains("a.tlk: 1 links"));
    const int writer = open(pipe.constData(), O_WRONLY);
    ASSERT_GE(writer, 0);
    close(writer);
    const CommandResult result = Finish(process);
    EXPECT_EQ(result.exitCode, 0) << ::testing::PrintToString(result);
    EXPECT_TRUE(result.Has(tree.Path(u"work/b.tlk"_s) + u": no links"_s));
}

} // namespace Halvern::Test
