// SPDX-License-Identifier: Apache-2.0

#include "OrdinaryRights.h"
#include "SelectionFixture.h"
#include "SmallStack.h"

#include <QtCore/QFile>

#include <filesystem>
#include <system_error>

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

namespace Halvern::Test {

using namespace Jobs;
using namespace Qt::StringLiterals;

namespace {

class SelectionWalkOnPosix : public SelectionOnDisk
{
protected:
    QByteArray Native(const QString& name) const
    {
        return QFile::encodeName(tree.Path(u"w/"_s + name));
    }
    void Link(const QString& target, const QString& name)
    {
        ASSERT_EQ(::symlink(QFile::encodeName(target).constData(), Native(name).constData()), 0);
    }
    void Forbid(const QString& name, mode_t mode = 0)
    {
        ASSERT_EQ(::chmod(Native(name).constData(), mode), 0);
        m_forbidden.append(Native(name));
    }
    ~SelectionWalkOnPosix() override
    {
        for (const QByteArray& path : std::as_const(m_forbidden))
            ::chmod(path.constData(), 0700);
        // Qt does not remove what has no name in UTF-8.
        std::error_code error;
        std::filesystem::remove_all(Native({}).constData(), error);
        EXPECT_FALSE(error) << error.message();
    }

private:
    QList<QByteArray> m_forbidden;
};

/// Folders in each other, more than a path can name. Removed from below again.
class DeepFolders
{
public:
    DeepFolders(const QByteArray& top, int depth) : m_top(top), m_depth(depth)
    {
        int at = ::open(m_top.constData(), O_RDONLY | O_DIRECTORY);
        for (int i = 0; i < m_depth; ++i) {
            EXPECT_EQ(::mkdirat(at, "d", 0700), 0);
            at = Step(at, "d");
        }
        ::close(at);
    }
    ~DeepFolders()
    {
        int at = ::open(m_top.constData(), O_RDONLY | O_DIRECTORY);
        for (int i = 0; i < m_depth; ++i)
            at = Step(at, "d");
        for (int i = 0; i < m_depth; ++i) {
            at = Step(at, "..");
            EXPECT_EQ(::unlinkat(at, "d", AT_REMOVEDIR), 0);
        }
        ::close(at);
    }
    DeepFolders(const DeepFolders&) = delete;
    DeepFolders& operator=(const DeepFolders&) = delete;

private:
    static int Step(int from, const char* name)
    {
        const int to = ::openat(from, name, O_RDONLY | O_DIRECTORY);
        ::close(from);
        return to;
    }

    QByteArray m_top;
    int m_depth;
};

} // namespace

TEST_F(SelectionWalkOnPosix, NamesLinksToFoldersAndDoesNotFollowThem)
{
    tree.File(u"w/other/o.prt"_s).File(u"w/p/a.prt"_s);
    Link(tree.Path(u"w/other"_s), u"p/link"_s);
    Link(u"."_s, u"p/self"_s);
    Link(u"link"_s, u"p/chain"_s);
    EXPECT_EQ(Names({u"p"_s}), (QStringList{u"p/"_s, u"p/a.prt"_s}));
    EXPECT_EQ(LeftOut({u"p"_s}), (QStringList{u"LinkToFolder p/chain"_s, u"LinkToFolder p/link"_s,
                                              u"LinkToFolder p/self"_s}));
}

TEST_F(SelectionWalkOnPosix, TakesLinksToFilesAsFiles)
{
    tree.File(u"w/other/o.prt"_s).Folder(u"w/p"_s);
    Link(tree.Path(u"w/other/o.prt"_s), u"p/link.prt"_s);
    EXPECT_EQ(Names({u"p"_s, u"p/link.prt"_s}),
              (QStringList{u"p/"_s, u"p/link.prt"_s, u"link.prt"_s}));
    EXPECT_EQ(LeftOut({u"p"_s}), QStringList());
}

TEST_F(SelectionWalkOnPosix, NamesWhatIsNoFile)
{
    tree.File(u"w/p/file"_s);
    Link(tree.Path(u"w/nowhere"_s), u"p/dead"_s);
    Link(u"round"_s, u"p/round"_s);
    Link(u"file/below"_s, u"p/through"_s);
    Link(u"/dev/null"_s, u"p/device"_s);
    ASSERT_EQ(::mkfifo(Native(u"p/pipe"_s).constData(), 0600), 0);
    const int listener = ::socket(AF_UNIX, SOCK_STREAM, 0);
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    const QByteArray name = Native(u"p/socket"_s);
    ASSERT_LT(name.size(), qsizetype(sizeof address.sun_path));
    std::copy(name.begin(), name.end(), address.sun_path);
    ASSERT_EQ(::bind(listener, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    ::close(listener);
    EXPECT_EQ(LeftOut({u"p"_s}), (QStringList{u"LinkToNothing p/dead"_s, u"NoFile p/device"_s,
                                              u"NoFile p/pipe"_s, u"LinkToNothing p/round"_s,
                                              u"NoFile p/socket"_s, u"LinkToNothing p/through"_s}));
    EXPECT_EQ(LeftOut({u"p/pipe"_s}), QStringList{u"SourceNoFile p/pipe"_s});
    EXPECT_EQ(Names({u"p"_s}), (QStringList{u"p/"_s, u"p/file"_s}));
}

TEST_F(SelectionWalkOnPosix, NamesASourceThatBecameALink)
{
    tree.Folder(u"w/other"_s);
    Link(tree.Path(u"w/gone"_s), u"dead"_s);
    Link(tree.Path(u"w/other"_s), u"folder"_s);
    EXPECT_EQ(LeftOut({u"dead"_s, u"folder"_s}),
              (QStringList{u"Vanished dead"_s, u"LinkToFolder folder"_s}));
}

TEST_F(SelectionWalkOnPosix, NamesAFolderThatVanishesBeforeItsTurn)
{
    QMap<QString, int> times;
    for (int last = 0; last < 20; ++last) {
        tree.File(u"w/p/a/x.prt"_s).File(u"w/p/b/y.prt"_s);
        int polls = 0;
        const SelectionListing listing = WalkSelection({tree.Path(u"w/p"_s)}, ExcludeRules(), [&] {
            if (polls++ == last)
                tree.Remove(u"w/p/b"_s);
            return false;
        });
        QStringList seen = Lines(listing.leftOut);
        for (const SelectedEntry& entry : listing.entries)
            if (entry.name.startsWith(u"p/b"_s))
                seen.append(entry.name);
        ++times[seen.join(u", "_s)];
    }
    EXPECT_EQ(times.keys(), (QStringList{{}, u"Vanished p/b, p/b"_s, u"p/b, p/b/y.prt"_s}))
        << "not seen at all, named, or listed in time";
}

TEST_F(SelectionWalkOnPosix, NamesEverythingWithAColonBelowTheTarget)
{
    tree.File(u"w/at:1/p/a.prt"_s).File(u"w/at:1/p/10:30/b.prt"_s).File(u"w/at:1/c:d.prt"_s);
    EXPECT_EQ(LeftOut({u"at:1/p"_s, u"at:1/c:d.prt"_s}),
              (QStringList{u"ColonInName at:1/p/10:30"_s, u"ColonInName at:1/p/10:30/b.prt"_s,
                           u"ColonInName at:1/c:d.prt"_s}));
    EXPECT_EQ(Names({u"at:1/p"_s}), (QStringList{u"p/"_s, u"p/a.prt"_s}));
    EXPECT_EQ(LeftOut({u"at:1/p"_s}, {u"*:*"_s}), QStringList{u"Excluded at:1/p/10:30: *:*"_s});
}

TEST_F(SelectionWalkOnPosix, NamesFoldersThatCannotBeListed)
{
    const OrdinaryRights rights;
    tree.File(u"w/p/closed/a.prt"_s).File(u"w/p/open/b.prt"_s);
    Forbid(u"p/closed"_s);
    const SelectionListing listing = List({u"p"_s});
    EXPECT_EQ(Lines(listing.leftOut), QStringList{u"NotReadable p/closed: Permission denied"_s});
    EXPECT_TRUE(listing.leftOut[0].IsFailure());
    EXPECT_EQ(Names({u"p"_s}),
              (QStringList{u"p/"_s, u"p/closed/"_s, u"p/open/"_s, u"p/open/b.prt"_s}));
}

TEST_F(SelectionWalkOnPosix, NamesWhatTheSystemTellsNothingOf)
{
    const OrdinaryRights rights;
    tree.File(u"w/p/listed/a.prt"_s).Folder(u"w/p/listed/sub"_s).Folder(u"w/closed/in"_s);
    Link(tree.Path(u"w/closed/in"_s), u"p/link"_s);
    Forbid(u"p/listed"_s, 0400);
    Forbid(u"closed"_s);
    EXPECT_EQ(LeftOut({u"p"_s}), (QStringList{u"NotReadable p/link: Permission denied"_s,
                                              u"NotReadable p/listed/a.prt: Permission denied"_s,
                                              u"NotReadable p/listed/sub: Permission denied"_s}));
    EXPECT_EQ(LeftOut({u"closed/in"_s}),
              QStringList{u"NotReadable closed/in: Permission denied"_s});
}

TEST_F(SelectionWalkOnPosix, TakesNothingOfAFolderWhosePatternsMayNotBeRead)
{
    const OrdinaryRights rights;
    tree.File(u"w/p/.corsyncignore"_s, "secret\n").File(u"w/p/secret"_s).Folder(u"w/q"_s);
    Forbid(u"p/.corsyncignore"_s);
    Link(u"nowhere"_s, u"q/.corsyncignore"_s);
    EXPECT_EQ(
        LeftOut({u"p"_s, u"q"_s}),
        (QStringList{u"NotReadable p/.corsyncignore: Permission denied; nothing of its folder "
                     u"is imported"_s,
                     u"NotReadable q/.corsyncignore: No such file or directory; nothing of "
                     u"its folder is imported"_s}));
    EXPECT_EQ(Names({u"p"_s}), QStringList{u"p/"_s});
}

TEST_F(SelectionWalkOnPosix, FollowsALinkToAFileOfPatterns)
{
    tree.File(u"w/shared"_s, "a\n").File(u"w/p/a"_s).File(u"w/p/b"_s);
    Link(u"../shared"_s, u"p/.corsyncignore"_s);
    EXPECT_EQ(Names({u"p"_s}), (QStringList{u"p/"_s, u"p/b"_s}));
}

TEST_F(SelectionWalkOnPosix, NamesWhatHasNoNameInUtf8)
{
    tree.Folder(u"w/p"_s);
    for (const QByteArray name : {"/H\xF6he.prt", "/ok\xC3\xA4\xFF"}) {
        QFile file;
        const int made = ::open((Native(u"p"_s) + name).constData(), O_CREAT | O_WRONLY, 0600);
        ASSERT_GE(made, 0);
        ::close(made);
    }
    ASSERT_EQ(::mkdir((Native(u"p"_s) + "/dir\xFF").constData(), 0700), 0);
    ASSERT_EQ(::mkdir((Native(u"p"_s) + "/dir\xFF/sub").constData(), 0700), 0);
    EXPECT_EQ(LeftOut({u"p"_s}),
              (QStringList{u"NameNotText p/H\\xF6he.prt"_s, u"NameNotText p/ok\u00e4\\xFF"_s,
                           u"NameNotText p/dir\\xFF"_s}));
    EXPECT_TRUE(List({u"p"_s}).leftOut[0].IsFailure());
    EXPECT_EQ(LeftOut({u"p"_s}, {u"H*.prt"_s, u"ok*"_s, u"dir*/"_s}),
              (QStringList{u"Excluded p/H\\xF6he.prt: H*.prt"_s, u"Excluded p/ok\u00e4\\xFF: ok*"_s,
                           u"Excluded p/dir\\xFF: dir*/"_s}));
}

TEST_F(SelectionWalkOnPosix, SaysWhatIsHidden)
{
    tree.File(u"w/p/.config/a"_s).File(u"w/p/.b"_s);
    QStringList hidden;
    for (const SelectedEntry& entry : List({u"p"_s, u"p/.b"_s}).entries)
        if (entry.isHidden)
            hidden.append(entry.name);
    EXPECT_EQ(hidden, (QStringList{u"p/.b"_s, u"p/.config"_s, u".b"_s}));
}

TEST_F(SelectionWalkOnPosix, TellsNamesApartThatDifferInLetterCaseAlone)
{
    tree.File(u"w/p/a"_s).File(u"w/p/A"_s).File(u"w/p/b/x"_s).File(u"w/p/B/x"_s);
    EXPECT_EQ(Names({u"p"_s}), (QStringList{u"p/"_s, u"p/A"_s, u"p/a"_s, u"p/B/"_s, u"p/B/x"_s,
                                            u"p/b/"_s, u"p/b/x"_s}));
}

TEST_F(SelectionWalkOnPosix, GoesAsDeepAsPathsCanWithLittleStackAndNamesTheRest)
{
    tree.Folder(u"w/p"_s);
    const DeepFolders deep(Native(u"p"_s), 2'200);
    SelectionListing listing;
    OnASmallStack([&] { listing = List({u"p"_s}); });
    EXPECT_GT(listing.entries.size(), 1'900);
    ASSERT_EQ(listing.leftOut.size(), 1);
    EXPECT_EQ(listing.leftOut[0].remark, Remark::NotReadable);
    EXPECT_EQ(listing.leftOut[0].detail, u"File name too long"_s);
    EXPECT_EQ(listing.leftOut[0].source, listing.entries.last().source);
}

} // namespace Halvern::Test
