// SPDX-License-Identifier: Apache-2.0

// Copies on systems and file systems that lack what a copy prefers. The kernel itself refuses the
// operation in question, in a process of its own.

#include "BaseFiles.h"
#include "FileTree.h"
#include "PoorerWorld.h"

#include <QtCore/QDir>

#include <gtest/gtest.h>

#include <cerrno>
#include <vector>

#include <fcntl.h>
#include <sys/stat.h>

namespace {

using namespace Halvern::Test;
using namespace Qt::StringLiterals;

const Refusal noUnnamedFiles{SYS_openat, EOPNOTSUPP, 2, O_TMPFILE};
const Refusal noRangeCopy{SYS_copy_file_range, ENOSYS};
const Refusal noRangeAcross{SYS_copy_file_range, EXDEV};
/// Answers 0 bytes: what some file systems say for files that they make up while they are read.
const Refusal emptyRangeCopy{SYS_copy_file_range, 0};
const Refusal noCarefulRename{SYS_renameat2, EINVAL};
const Refusal noHandles{SYS_linkat, ENOENT, 4, AT_SYMLINK_FOLLOW};
const Refusal noTimes{SYS_utimensat, EPERM};

struct PoorerWorld
{
    const char* name;
    std::vector<Refusal> refusals;
};

void PrintTo(const PoorerWorld& world, std::ostream* out)
{
    *out << world.name;
}

class CopyFallbacks : public ::testing::TestWithParam<PoorerWorld>
{
protected:
    CopyFallbacks()
    {
        tree.File(u"in/a.prt"_s, content).Folder(u"out"_s);
        tree.Touch(u"in/a.prt"_s, time);
        ::chmod(QFile::encodeName(tree.Path(u"in/a.prt"_s)).constData(), 0464);
    }
    bool Copy(const QString& target, QString* error)
    {
        return CopyFileBytes(tree.Path(u"in/a.prt"_s), tree.Path(target), error);
    }
    QStringList Names()
    {
        return QDir(tree.Path(u"out"_s))
            .entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
    }

    const QByteArray content = PatternBytes(3 * 256 * 1024 + 17);
    const QDateTime time = QDateTime::fromSecsSinceEpoch(1'600'000'000);
    FileTree tree;
};

TEST_P(CopyFallbacks, GiveTheSameCopy)
{
    QString error;
    EXPECT_EQ(InAPoorerWorld(GetParam().refusals, [&] { return Copy(u"out/a.prt"_s, &error); }),
              Good);
    EXPECT_EQ(Names(), QStringList{u"a.prt"_s});
    EXPECT_TRUE(tree.Read(u"out/a.prt"_s) == content);
    EXPECT_EQ(tree.Modified(u"out/a.prt"_s), time);
    struct stat info;
    ASSERT_EQ(::stat(QFile::encodeName(tree.Path(u"out/a.prt"_s)).constData(), &info), 0);
    EXPECT_EQ(info.st_mode & 07777, mode_t(0464));
    EXPECT_EQ(info.st_nlink, nlink_t(1));
}

TEST_P(CopyFallbacks, MakeNamesOfFullLength)
{
    QString error;
    const QString longest = QString(255, u'x');
    EXPECT_EQ(
        InAPoorerWorld(GetParam().refusals, [&] { return Copy(u"out/"_s + longest, &error); }),
        Good);
    EXPECT_EQ(Names(), QStringList{longest});
}

TEST_P(CopyFallbacks, NeverOverwrite)
{
    tree.File(u"out/a.prt"_s, "old");
    const auto work = [&] {
        QString error;
        return !Copy(u"out/a.prt"_s, &error) && error == u"Destination file exists";
    };
    EXPECT_EQ(InAPoorerWorld(GetParam().refusals, work), Good);
    EXPECT_EQ(tree.Read(u"out/a.prt"_s), "old");
    EXPECT_EQ(Names(), QStringList{u"a.prt"_s});
}

TEST_P(CopyFallbacks, LeaveNothingWhenTheyFailAtTheEnd)
{
    std::vector<Refusal> refusals = GetParam().refusals;
    refusals.push_back(noTimes);
    const auto work = [&] {
        QString error;
        return !Copy(u"out/a.prt"_s, &error) &&
               error == u"Failure to write block: Operation not permitted";
    };
    EXPECT_EQ(InAPoorerWorld(refusals, work), Good);
    EXPECT_EQ(Names(), QStringList());
}

INSTANTIATE_TEST_SUITE_P(
    Worlds, CopyFallbacks,
    ::testing::Values(PoorerWorld{"Rich", {}}, PoorerWorld{"WithoutUnnamedFiles", {noUnnamedFiles}},
                      PoorerWorld{"WithoutRangeCopy", {noRangeCopy}},
                      PoorerWorld{"WithoutRangeCopyAcross", {noRangeAcross}},
                      PoorerWorld{"WithRangeCopyOfNothing", {emptyRangeCopy}},
                      PoorerWorld{"WithoutNamesForUnnamedFiles", {noHandles}},
                      PoorerWorld{"WithoutCarefulRename", {noUnnamedFiles, noCarefulRename}},
                      PoorerWorld{"WithoutAny", {noUnnamedFiles, noRangeCopy, noCarefulRename}}),
    [](const auto& world) { return world.param.name; });

} // namespace
