// SPDX-License-Identifier: Apache-2.0

// Files that others hold open, and network paths, as only Windows has them.

#include "FormatFixture.h"

#include "gltf/GltfResolver.h"
#include "pluginkit/FilePaths.h"
#include "pluginkit/FormatError.h"
#include "pluginkit/LinkPaths.h"
#include "pluginkit/ReplacementFile.h"
#include "pluginkit/Utf.h"

#include <QtCore/QTemporaryDir>

#include <chrono>
#include <thread>

#ifndef NOMINMAX // the compiler may define it
#define NOMINMAX
#endif
#include <windows.h>

namespace Halvern::Test {

using namespace PluginKit;
using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr DWORD ShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

/// Opens a file for reading, as a scanner or an indexer does, and lets it go after a while.
class Reader
{
public:
    Reader(const QString& path, DWORD share)
        : m_handle(
              ::CreateFileW(Wide(path), GENERIC_READ, share, nullptr, OPEN_EXISTING, 0, nullptr))
    {
        EXPECT_NE(m_handle, INVALID_HANDLE_VALUE);
    }
    ~Reader() { LetGo(); }
    Reader(const Reader&) = delete;
    Reader& operator=(const Reader&) = delete;

    void LetGoAfter(std::chrono::milliseconds time)
    {
        m_thread = std::thread([this, time] {
            std::this_thread::sleep_for(time);
            ::CloseHandle(m_handle);
        });
    }
    void LetGo()
    {
        if (m_thread.joinable())
            m_thread.join();
        else if (m_handle != INVALID_HANDLE_VALUE)
            ::CloseHandle(m_handle);
        m_handle = INVALID_HANDLE_VALUE;
    }

private:
    HANDLE m_handle;
    std::thread m_thread;
};

class HeldGltf : public ResolverFixture
{
protected:
    HeldGltf() : ResolverFixture(m_resolver) { tree.File(u"a.gltf"_s, Before); }

    bool Repath() { return ResolverFixture::Repath(u"a.gltf"_s, {LinkTo(u"/uri", u"new.png")}); }
    void ExpectContent(const QByteArray& content) const
    {
        EXPECT_EQ(tree.Contents(), (FileTree::Snapshot{{u"a.gltf"_s, content}}));
    }

    static constexpr const char* Before = R"({"uri":"old.png"})";
    static constexpr const char* After = R"({"uri":"new.png"})";

private:
    Formats::Gltf::GltfResolver m_resolver;
};

/// A folder on a network share. Under Wine that is the one that windows/run-wine.sh makes; on
/// Windows the share that a drive has for administrators.
class NetworkShare : public ResolverFixture
{
protected:
    NetworkShare() : ResolverFixture(m_resolver), folder(Root() + u"/XXXXXX"_s)
    {
        EXPECT_TRUE(folder.isValid()) << folder.errorString().toStdString();
    }

    static QString Root()
    {
        return qEnvironmentVariableIsSet("WINECONFIGDIR")
                   ? u"//corsync/share"_s
                   : u"//localhost/"_s + QDir::tempPath().replace(1, 1, u"$"_s);
    }
    QString Path(const QString& name) const { return folder.filePath(name); }
    void Write(const QString& name, const QByteArray& content) const
    {
        QFile file(Path(name));
        ASSERT_TRUE(file.open(QFile::WriteOnly)) << file.errorString().toStdString();
        file.write(content);
    }
    QByteArray Content(const QString& name) const
    {
        QFile file(Path(name));
        EXPECT_TRUE(file.open(QFile::ReadOnly));
        return file.readAll();
    }

    Formats::Gltf::GltfResolver m_resolver;
    QTemporaryDir folder;
};

} // namespace

TEST_F(HeldGltf, IsRewrittenWhenAReaderThatSharesEverythingIsDoneSoon)
{
    Reader reader(tree.Path(u"a.gltf"_s), ShareAll);
    reader.LetGoAfter(300ms);
    EXPECT_TRUE(Repath()) << context.lines.join(u'\n').toStdString();
    ExpectContent(After);
}

TEST_F(HeldGltf, IsRewrittenWhenAReaderThatSharesNoDeletionIsDoneSoon)
{
    Reader reader(tree.Path(u"a.gltf"_s), FILE_SHARE_READ | FILE_SHARE_WRITE);
    reader.LetGoAfter(300ms);
    EXPECT_TRUE(Repath()) << context.lines.join(u'\n').toStdString();
    ExpectContent(After);
}

TEST_F(HeldGltf, StaysAsItWasWhenItsReaderDoesNotLetGo)
{
    Reader reader(tree.Path(u"a.gltf"_s), FILE_SHARE_READ | FILE_SHARE_WRITE);
    const auto start = std::chrono::steady_clock::now();
    EXPECT_FALSE(Repath());
    const auto waited = std::chrono::steady_clock::now() - start;
    EXPECT_GE(waited, 1s);
    EXPECT_LT(waited, 30s);
    ASSERT_EQ(context.lines.size(), 1);
    EXPECT_TRUE(context.lines.first().contains(u": the file cannot be replaced: "_s))
        << context.lines.first().toStdString();
    reader.LetGo();
    ExpectContent(Before);
}

TEST_F(HeldGltf, WhatItsHolderWritesMeanwhileIsNotOverwritten)
{
    const std::filesystem::path file = PathFromUtf8(tree.Path(u"a.gltf"_s).toStdString());
    InputFile source(file);
    ReplacementFile replacement(source);
    replacement.Write("mine");
    Reader reader(tree.Path(u"a.gltf"_s), FILE_SHARE_READ | FILE_SHARE_WRITE);
    std::thread writer([&] {
        std::this_thread::sleep_for(300ms);
        tree.File(u"a.gltf"_s, "theirs");
        // A look at the file comes between: what is written right before the end goes unseen.
        std::this_thread::sleep_for(700ms);
        reader.LetGo();
    });
    EXPECT_THROW(replacement.Commit(), FormatError);
    writer.join();
    EXPECT_EQ(tree.Read(u"a.gltf"_s), "theirs");
}

TEST_F(NetworkShare, HoldsFilesWhoseLinksAreReadAndRewritten)
{
    Write(u"a.gltf"_s, R"({"uri":"50%25.png"})");
    Write(u"50%25.png"_s, "picture");
    SyncPlugin::FileLinkInfo* links = nullptr;
    int count = 0;
    ASSERT_TRUE(m_resolver.GetFileLinks(Wide(Path(u"a.gltf"_s)), &links, &count, &context))
        << context.lines.join(u'\n').toStdString();
    ASSERT_EQ(count, 1);
    // Only the file that stands there tells that this is not "50%.png".
    EXPECT_EQ(FromWide(links[0].path), u"50%25.png"_s);
    delete[] links;

    const SyncPlugin::FileLinkInfo link = Record(LinkTo(u"/uri", u"new.png"));
    EXPECT_TRUE(m_resolver.RepathFileLinks(Wide(Path(u"a.gltf"_s)), &link, 1, &context))
        << context.lines.join(u'\n').toStdString();
    EXPECT_EQ(Content(u"a.gltf"_s), R"({"uri":"new.png"})");
}

TEST_F(NetworkShare, IsFoundFromAFileOnADrive)
{
    Write(u"b.png"_s, "picture");
    const std::filesystem::path drive = PathFromUtf8(tree.Path().toStdString());
    EXPECT_TRUE(NamesExistingFile(Path(u"b.png"_s).toStdString(), drive));
    EXPECT_TRUE(NamesFolder(folder.path().toStdString(), drive));
    EXPECT_FALSE(NamesExistingFile(Path(u"c.png"_s).toStdString(), drive));
}

TEST(NetworkPaths, StayWhatTheyAre)
{
    EXPECT_TRUE(IsAbsolutePath(L"//server/share/a"));
    EXPECT_TRUE(IsAbsolutePath(L"\\\\server\\share\\a"));
    EXPECT_FALSE(IsAbsolutePath(L"/a"));
    EXPECT_EQ(PathIn(L"C:/folder", "//server/share/a").native(), L"//server/share/a");
    EXPECT_EQ(PathIn(L"\\\\server\\share\\folder", "../a").native(),
              L"\\\\server\\share\\folder\\../a");
    EXPECT_EQ(NormalPath(L"//server/share/folder/../a").native(), L"\\\\server\\share\\a");
}

TEST(NamesOfFiles, ThatAreNoTextAreShownAllTheSame)
{
    EXPECT_EQ(PathToUtf8(L"a\xD83C\\b.png"), "a\uFFFD/b.png");
    EXPECT_EQ(PathToUtf8(L"\xDF32"), "\uFFFD");
    EXPECT_EQ(PathToUtf8(L"\xD83C\xDF32"), "\U0001F332");
}

} // namespace Halvern::Test
