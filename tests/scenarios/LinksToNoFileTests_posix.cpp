// SPDX-License-Identifier: Apache-2.0

// Links to what is there and is no file: the linking file's line says so, as of a missing file.

#include "ScenarioFixture.h"

#include <QtCore/QFile>

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

namespace Halvern::Test {

namespace {

/// work/proj/top.tlk links work/lib/thing, which is no file.
class LinksToNoFile : public ScenarioFixture
{
protected:
    LinksToNoFile() { tree.File(u"work/proj/top.tlk"_s, Top).Folder(u"work/lib"_s); }
    QByteArray Thing() const { return QFile::encodeName(tree.Path(u"work/lib/thing"_s)); }
    void ExpectTold(const QStringList& options = {})
    {
        const ImportReport report = Report(QStringList{u"proj"_s} + options);
        EXPECT_EQ(report.exitCode, 4) << ::testing::PrintToString(report);
        const ReportedFile top = report.Of(u"work/proj/top.tlk"_s);
        EXPECT_EQ(top.remark, u"links-no-file"_s);
        EXPECT_EQ(top.reason, u"a link stays as it is, for it leads to no file: "_s +
                                  QFile::decodeName(Thing()));
        EXPECT_EQ(report.StatusOf(u"work/lib/thing"_s), u"skipped"_s);
    }
    void ExpectToldByEveryRunUntilItIsAFile()
    {
        ExpectTold({u"--dry-run"_s});
        for (int run = 0; run < 2; ++run)
            ExpectTold();
        EXPECT_EQ(tree.Read(u"cloud/proj/top.tlk"_s), Top);
        EXPECT_EQ(Report({u"proj"_s, u"--move"_s}).exitCode, 1);
        EXPECT_EQ(tree.Read(u"work/proj/top.tlk"_s), Top);
        tree.Remove(u"work/lib/thing"_s).File(u"work/lib/thing"_s, "a file");
        EXPECT_EQ(Report({u"proj"_s}).exitCode, 0);
        EXPECT_EQ(tree.Read(u"cloud/proj/top.tlk"_s), "link 1 lib/thing\n");
    }

    static constexpr char Top[] = "link 1 ../lib/thing\n";
};

} // namespace

TEST_F(LinksToNoFile, AFolderIsTold)
{
    tree.Folder(u"work/lib/thing"_s);
    ExpectToldByEveryRunUntilItIsAFile();
}

TEST_F(LinksToNoFile, APipeIsTold)
{
    ASSERT_EQ(::mkfifo(Thing().constData(), 0644), 0);
    ExpectToldByEveryRunUntilItIsAFile();
}

TEST_F(LinksToNoFile, ASocketIsTold)
{
    const int handle = ::socket(AF_UNIX, SOCK_STREAM, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    ASSERT_LT(Thing().size(), qsizetype(sizeof address.sun_path));
    Thing().toStdString().copy(address.sun_path, sizeof address.sun_path - 1);
    ASSERT_EQ(::bind(handle, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    ExpectToldByEveryRunUntilItIsAFile();
    ::close(handle);
}

TEST_F(LinksToNoFile, ASymbolicLinkToAPipeIsTold)
{
    ASSERT_EQ(::mkfifo((Thing() + "-pipe").constData(), 0644), 0);
    ASSERT_EQ(::symlink((Thing() + "-pipe").constData(), Thing().constData()), 0);
    ExpectToldByEveryRunUntilItIsAFile();
}

TEST_F(LinksToNoFile, ADeviceIsRefused)
{
    tree.File(u"work/proj/top.tlk"_s, "link 1 /dev/null\n");
    EXPECT_EQ(Report({u"proj"_s}).exitCode, 8);
}

TEST_F(LinksToNoFile, APipeInTheSelectionHasOneLine)
{
    tree.File(u"work/proj/top.tlk"_s, "link 1 pipe\n");
    ASSERT_EQ(::mkfifo(QFile::encodeName(tree.Path(u"work/proj/pipe"_s)).constData(), 0644), 0);
    const ImportReport report = Report({u"proj"_s});
    EXPECT_EQ(report.exitCode, 4);
    EXPECT_EQ(report.Lines().filter(u"work/proj/pipe: "_s).size(), 1)
        << ::testing::PrintToString(report);
}

TEST_F(LinksToNoFile, AFolderOfTheSelectionIsWhereTheLinkLeads)
{
    tree.File(u"work/proj/top.tlk"_s, "link 1 sub\n").Folder(u"work/proj/sub"_s);
    EXPECT_EQ(Report({u"proj"_s}).exitCode, 0);
    EXPECT_EQ(tree.Read(u"cloud/proj/top.tlk"_s), "link 1 sub\n");
    EXPECT_TRUE(tree.Exists(u"cloud/proj/sub"_s));
}

} // namespace Halvern::Test
