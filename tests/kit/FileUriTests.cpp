// SPDX-License-Identifier: Apache-2.0

#include "FileTree.h"

#include "pluginkit/FileUri.h"
#include "pluginkit/LinkPaths.h"
#include "pluginkit/Utf.h"

#include <gtest/gtest.h>

namespace Halvern::Test {

using namespace PluginKit;
using namespace Qt::StringLiterals;

namespace {

struct Row
{
    const char* what;
    std::string uri;
    std::string path;
};

std::string PathOf(const std::string& uri, const FileTree& tree)
{
    return PathOfUri(uri, PathFromUtf8(tree.Path().toStdString()));
}

} // namespace

TEST(FileUri, OnlyWhatNamesAFileIsALink)
{
    for (const char* link : {"a.png", "../a.png", "D:/a.png", "file:///a.png", "FILE:///a.png",
                             "//server/share/a.png", "./x:y.png", "12:30.png", "a%3Ab.png", "?"})
        EXPECT_TRUE(IsLinkUri(link)) << link;
    for (const char* other :
         {"", ":", "#fragment", "data:image/png;base64,AAAA", "DATA:,x", "http://example.com/a.png",
          "https://example.com/a.png", "urn:isbn:0", "blob+x-1.2:y", "vault://x"})
        EXPECT_FALSE(IsLinkUri(other)) << other;
}

TEST(FileUri, NamesAPath)
{
    const Row rows[] = {
        {"a relative path", "../textures/a.png", "../textures/a.png"},
        {"blanks and letters beyond ASCII", "H%C3%B6he%20%c3%bcber.png", "Höhe über.png"},
        {"letters beyond ASCII that nobody encoded", "Höhe.png", "Höhe.png"},
        {"a percent sign that encodes nothing", "50%.png", "50%.png"},
        {"escapes that are no UTF-8", "%FF.png", "%FF.png"},
        {"a Windows drive without a scheme", "D:/lib/a.png", "D:/lib/a.png"},
        {"a file URI with a drive", "file:///D:/lib/a%20b.png", "D:/lib/a b.png"},
        {"a file URI one slash short", "file://D:/lib/a.png", "D:/lib/a.png"},
        {"a file URI without authority", "file:/lib/a.png", "/lib/a.png"},
        {"a file URI", "file:///lib/a.png", "/lib/a.png"},
        {"a file URI of this machine", "file://localhost/lib/a.png", "/lib/a.png"},
        {"a file URI of a server", "file://server/share/a.png", "//server/share/a.png"},
        {"a scheme in capitals", "FILE:///lib/a.png", "/lib/a.png"},
        {"a share", "//server/share/a.png", "//server/share/a.png"},
        {"folders of Windows", "..\\my%20textures\\a.png", "../my textures/a.png"},
        {"a drive of Windows", "D:\\lib\\a.png", "D:/lib/a.png"},
        {"a file URI of Windows", "file:///D:\\lib\\a%20b.png", "D:/lib/a b.png"},
        {"an encoded backslash", "a%5Cb.png", "a\\b.png"},
    };
    const FileTree tree;
    for (const Row& row : rows)
        EXPECT_EQ(PathOf(row.uri, tree), row.path) << row.what;
}

TEST(FileUri, ARawNameCountsOnlyWhenNoFileHasTheDecodedOne)
{
    FileTree tree;
    EXPECT_EQ(PathOf("a%20b.png", tree), "a b.png") << "neither exists";
    tree.File(u"a%20b.png"_s);
    EXPECT_EQ(PathOf("a%20b.png", tree), "a%20b.png") << "only the raw one exists";
    tree.File(u"a b.png"_s);
    EXPECT_EQ(PathOf("a%20b.png", tree), "a b.png") << "both exist";
}

TEST(FileUri, ANulIsKeptForTheCallerToRefuse)
{
    FileTree tree;
    tree.File(u"a%00b"_s);
    EXPECT_EQ(PathOf("a%00b", tree), std::string("a\0b", 3));
}

TEST(FileUri, APathBecomesAUri)
{
    const Row rows[] = {
        {"a relative path", "../textures/a.png", "../textures/a.png"},
        {"blanks and letters beyond ASCII", "H%C3%B6he%20%C3%BCber.png", "Höhe über.png"},
        {"what would be query, fragment or escape", "a%3Fb%23c%25d.png", "a?b#c%d.png"},
        {"sub-delims stay", "a(1)+b,c;d=e&f!.png", "a(1)+b,c;d=e&f!.png"},
        {"a colon that would end a scheme", "./12:30/a.png", "12:30/a.png"},
        {"a colon after the first segment", "a/12:30.png", "a/12:30.png"},
        {"a drive", "file:///D:/x/a%20b.png", "D:/x/a b.png"},
        {"a drive with backslashes", "file:///D:/x/a.png", "D:\\x\\a.png"},
        {"a drive's own current folder is none", "./D:a.png", "D:a.png"},
        {"an absolute path", "file:///lib/a.png", "/lib/a.png"},
        {"a share", "file://server/share/a.png", "//server/share/a.png"},
        {"a share with backslashes", "file://server/share/a.png", "\\\\server\\share\\a.png"},
        {"quotes, backslashes and controls need no JSON escape", "a%22b%5Cc%0A.png",
         "a\"b\\c\n.png"},
    };
    for (const Row& row : rows)
        EXPECT_EQ(UriOfPath(row.path), row.uri) << row.what;
}

TEST(FileUri, WhatIsWrittenNamesTheSamePathAgain)
{
    const FileTree tree;
    for (const char* path :
         {"../Höhe/a b.png", "100%25.png", "a#b?c.png", "D:/x/ü.png", "/lib/x y.png",
          "//server/share/a.png", "[1]{2}|^`.png", "木目.png", "a\\b.png"})
        EXPECT_TRUE(IsSamePath(PathOf(UriOfPath(path), tree), path)) << path;
}

TEST(FileUri, BackslashesLeadToTheFileOnEverySystem)
{
    FileTree tree;
    tree.File(u"my lib/a.png"_s);
    const std::filesystem::path folder = PathFromUtf8(tree.Path().toStdString());
    EXPECT_EQ(WithSlashes("my lib\\a.png", folder), "my lib/a.png");
    EXPECT_EQ(WithSlashes("..\\lost\\a.png", folder), "../lost/a.png");
    EXPECT_EQ(PathOfUri("my lib\\a.png", folder), "my lib/a.png");
    EXPECT_EQ(PathOfUri("my%20lib\\a.png", folder), "my lib/a.png");
}

TEST(FileUri, AFileThatIsThereIsTold)
{
    FileTree tree;
    tree.File(u"sub/a.png"_s);
    const auto exists = [&](std::string_view path) {
        return NamesExistingFile(path, PathFromUtf8(tree.Path().toStdString()));
    };
    EXPECT_TRUE(exists("sub/a.png"));
    for (const std::string_view path : {std::string_view("sub"), std::string_view("sub/b.png"),
                                        std::string_view("sub/a.png\0x", 11),
                                        std::string_view("sub/\xE4.png"), std::string_view("")})
        EXPECT_FALSE(exists(path)) << path;
}

TEST(FileUri, PathsAreTheSameApartFromALeadingDot)
{
    EXPECT_TRUE(IsSamePath("./a.png", "a.png"));
    EXPECT_TRUE(IsSamePath("a.png", "a.png"));
    EXPECT_FALSE(IsSamePath("../a.png", "a.png"));
    EXPECT_FALSE(IsSamePath("A.png", "a.png"));
}

TEST(FileUri, ANameThatCanOnlyBeAFolderIsTold)
{
    FileTree tree;
    tree.File(u"sub.x/a.png"_s);
    const auto isFolder = [&](std::string_view path) {
        return NamesFolder(path, PathFromUtf8(tree.Path().toStdString()));
    };
    for (const char* folder : {"", "/", ".", "..", "a/", "../", "a/..", "sub.x", "./sub.x"})
        EXPECT_TRUE(isFolder(folder)) << folder;
    for (const char* file : {"a", "sub.x/a.png", "none", "..a", "sub", "none/..."})
        EXPECT_FALSE(isFolder(file)) << file;
    EXPECT_FALSE(isFolder(std::string_view("sub.x\0y", 7)));
}

} // namespace Halvern::Test
