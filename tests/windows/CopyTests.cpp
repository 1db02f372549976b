// SPDX-License-Identifier: Apache-2.0

// How a copy comes into being, and what it does about programs that look at every new file.

#include "FileTree.h"
#include "HeldFile.h"
#include "support/FileOperations.h"

#include <QtCore/QDir>

#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include <windows.h>

namespace Halvern::Test {

using namespace Qt::StringLiterals;

namespace {

constexpr qint64 BigFile = qint64(96) << 20;
constexpr DWORD ShortWhile = 300;

/// Opens a file in this process; sharing is asked of every handle alike.
HANDLE Open(const QString& path, DWORD share)
{
    const QString native = ApiPath(path);
    return ::CreateFileW(reinterpret_cast<const wchar_t*>(native.utf16()), GENERIC_READ, share,
                         nullptr, OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
}

class WindowsCopy : public ::testing::Test
{
protected:
    WindowsCopy() { tree.Folder(u"out"_s); }

    bool Copy() { return FileLink::CopyFileBytes(Source(), Target(), &error); }
    QString Source() const { return tree.Path(u"a.dat"_s); }
    QString Target() const { return tree.Path(u"out/a.dat"_s); }
    QStringList Names() const
    {
        return QDir(tree.Path(u"out"_s))
            .entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
    }

    FileTree tree;
    QString error;
};

} // namespace

TEST_F(WindowsCopy, ShowsTheNameOnlyWhenTheCopyIsComplete)
{
    const QByteArray content = PatternBytes(BigFile);
    tree.File(u"a.dat"_s, content);
    std::atomic<bool> done = false;
    std::thread copier([&] {
        EXPECT_TRUE(Copy()) << error.toStdString();
        done = true;
    });
    // As it is seen first. While the system renames it, the file does not open for others.
    QFile file(Target());
    while (!file.open(QFile::ReadOnly) && !done)
        std::this_thread::yield();
    const bool isOpen = file.isOpen() || file.open(QFile::ReadOnly);
    const QByteArray seen = file.readAll();
    copier.join();

    ASSERT_TRUE(isOpen) << file.errorString().toStdString();
    EXPECT_EQ(seen.size(), content.size());
    EXPECT_TRUE(seen == content);
    EXPECT_EQ(Names(), QStringList{u"a.dat"_s});
}

TEST_F(WindowsCopy, WaitsForAProgramThatLooksAtTheNewFile)
{
    tree.File(u"a.dat"_s, PatternBytes(BigFile));
    std::atomic<bool> done = false;
    std::atomic<bool> held = false;
    std::thread scanner([&] {
        while (!done && !held) {
            for (const QString& name : Names()) {
                const QString path = tree.Path(u"out/"_s + name);
                const HANDLE file = Open(path, FILE_SHARE_READ | FILE_SHARE_WRITE);
                if (file == INVALID_HANDLE_VALUE)
                    continue;
                held = true;
                while (QFileInfo(path).size() < BigFile && !done)
                    std::this_thread::yield();
                ::Sleep(ShortWhile);
                ::CloseHandle(file);
            }
        }
    });

    EXPECT_TRUE(Copy()) << error.toStdString();

    done = true;
    scanner.join();
    EXPECT_TRUE(held);
    EXPECT_EQ(Names(), QStringList{u"a.dat"_s});
}

TEST_F(WindowsCopy, LeavesNothingOfAReadOnlyFileThatFindsItsNameTaken)
{
    tree.File(u"a.dat"_s, PatternBytes(BigFile));
    QFile::setPermissions(Source(), QFile::ReadOwner);
    std::thread other([&] {
        while (Names().isEmpty())
            std::this_thread::yield();
        tree.File(u"out/a.dat"_s, "other");
    });

    EXPECT_FALSE(Copy());

    other.join();
    QFile::setPermissions(Source(), QFile::ReadOwner | QFile::WriteOwner);
    EXPECT_EQ(error, u"Destination file exists"_s);
    EXPECT_EQ(Names(), QStringList{u"a.dat"_s});
    EXPECT_TRUE(tree.Read(u"out/a.dat"_s) == "other");
}

TEST_F(WindowsCopy, IsFlushedAsSoonAsAProgramThatReadsItIsDone)
{
    tree.File(u"out/a.dat"_s);
    const HANDLE file = Open(Target(), FILE_SHARE_READ);
    ASSERT_NE(file, INVALID_HANDLE_VALUE);
    std::thread reader([file] {
        ::Sleep(ShortWhile);
        ::CloseHandle(file);
    });

    EXPECT_TRUE(FileLink::FlushToDisk(Target(), &error)) << error.toStdString();

    reader.join();
}

TEST_F(WindowsCopy, IsNotFlushedWhileAProgramKeepsItsData)
{
    tree.File(u"out/a.dat"_s);
    const HANDLE file = Open(Target(), FILE_SHARE_READ);
    ASSERT_NE(file, INVALID_HANDLE_VALUE);

    EXPECT_FALSE(FileLink::FlushToDisk(Target(), &error));

    ::CloseHandle(file);
    EXPECT_TRUE(error.startsWith(u"Cannot flush %1: "_s.arg(Target()))) << error.toStdString();
}

} // namespace Halvern::Test
