// SPDX-License-Identifier: Apache-2.0

// What the importer does while another program has a file open, for each way to share it. Whether
// that program only reads the file or writes it, too, must make no difference.

#include "HeldFile.h"
#include "ReplacingFixture.h"

#include <gmock/gmock.h>

#include <cstring>

namespace Halvern::Test {

using namespace Qt::StringLiterals;

namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::IsEmpty;
using ::testing::SizeIs;

struct Share
{
    const char* name;
    const char* letters;
};

void PrintTo(const Share& share, std::ostream* out)
{
    *out << share.name;
}

std::string NameOf(const ::testing::TestParamInfo<Share>& info)
{
    return info.param.name;
}

const auto EachShare =
    ::testing::Values(Share{"None", "-"}, Share{"Read", "r"}, Share{"Write", "w"},
                      Share{"Delete", "d"}, Share{"ReadWrite", "rw"}, Share{"ReadDelete", "rd"},
                      Share{"WriteDelete", "wd"}, Share{"ReadWriteDelete", "rwd"});

/// A file while its holder shares it in one of these ways.
class Sharing : public ReplacingFixture, public ::testing::WithParamInterface<Share>
{
protected:
    static bool Shares(char letter) { return std::strchr(GetParam().letters, letter) != nullptr; }
    static QString Letters() { return QString::fromLatin1(GetParam().letters); }
    static QStringList Accesses() { return {u"r"_s, u"rw"_s}; }

    std::vector<std::string> ErrorTexts() const
    {
        std::vector<std::string> texts;
        for (const QString& line : Errors())
            texts.push_back(line.toStdString());
        return texts;
    }
};

} // namespace

class HeldSource : public Sharing
{};

TEST_P(HeldSource, IsCopiedOnlyWhileItsHolderSharesReading)
{
    for (const QString& access : Accesses()) {
        SCOPED_TRACE(access.toStdString());
        const QString name = access + u".dat"_s;
        tree.File(u"src/"_s + name, "new");
        const HeldFile held(Source(name), access, Letters());
        log.Clear();

        Import({Source(name)});

        EXPECT_EQ(tree.Exists(u"cloud/"_s + name), Shares('r'));
        const std::string failure = "Failed to copy file src/" + name.toStdString() + " to cloud/" +
                                    name.toStdString() + ". Error: ";
        if (Shares('r'))
            EXPECT_THAT(ErrorTexts(), IsEmpty());
        else
            EXPECT_THAT(ErrorTexts(), Contains(HasSubstr(failure)));
    }
}

INSTANTIATE_TEST_SUITE_P(EachShareMode, HeldSource, EachShare, NameOf);

class HeldTarget : public Sharing
{};

TEST_P(HeldTarget, IsReplacedOnlyWhileItsHolderSharesDeletion)
{
    for (const QString& access : Accesses()) {
        SCOPED_TRACE(access.toStdString());
        tree.File(u"src/a.dat"_s, "new").File(u"cloud/a.dat"_s, "old");
        {
            const HeldFile held(Cloud(u"a.dat"_s), access, Letters());
            EXPECT_EQ(Replace(), Shares('d'));
        }
        EXPECT_EQ(tree.Read(u"cloud/a.dat"_s), Shares('d') ? "new" : "old");
        EXPECT_FALSE(tree.Exists(u"cloud/a.dat.tmp"_s));
        if (Shares('d'))
            EXPECT_THAT(ErrorTexts(), IsEmpty());
        else
            EXPECT_THAT(
                ErrorTexts(),
                ElementsAre(HasSubstr("Failed to rename existing file cloud/a.dat to temp file "
                                      "cloud/a.dat.tmp"),
                            HasSubstr("Failed to copy file src/a.dat to cloud/a.dat. Error: ")));
    }
}

INSTANTIATE_TEST_SUITE_P(EachShareMode, HeldTarget, EachShare, NameOf);

class HeldMovedSource : public Sharing
{};

TEST_P(HeldMovedSource, StaysUnlessItsHolderSharesDeletion)
{
    for (const QString& access : Accesses()) {
        SCOPED_TRACE(access.toStdString());
        const QString name = access + u".dat"_s;
        tree.File(u"src/"_s + name, "new");
        log.Clear();
        {
            const HeldFile held(Source(name), access, Letters());
            Import({Source(name)}, {}, Global::MoveFiles);
        }
        EXPECT_EQ(tree.Read(u"cloud/"_s + name), "new");
        EXPECT_EQ(tree.Exists(u"src/"_s + name), !Shares('d'));
        if (Shares('d'))
            EXPECT_THAT(ErrorTexts(), IsEmpty());
        else
            EXPECT_THAT(ErrorTexts(),
                        Contains(HasSubstr("Failed to delete source file src/" +
                                           name.toStdString() + " after copying it")));
    }
}

INSTANTIATE_TEST_SUITE_P(ShareModesThatLetItBeRead, HeldMovedSource,
                         ::testing::Values(Share{"Read", "r"}, Share{"ReadWrite", "rw"},
                                           Share{"ReadDelete", "rd"},
                                           Share{"ReadWriteDelete", "rwd"}),
                         NameOf);

class HeldParkedFile : public Sharing
{};

// The other program opens the parked file in the time in which the new one is copied: a scanner or
// an indexer does just that.
TEST_P(HeldParkedFile, StaysUnlessItsHolderSharesDeletionAndTheCopyCountsAllTheSame)
{
    const QByteArray content = PatternBytes(qint64(96) << 20);
    tree.File(u"src/a.dat"_s, content).File(u"cloud/a.dat"_s, "old");
    {
        const HeldFile held(Cloud(u"a.dat.tmp"_s), u"r"_s, Letters(), u"await"_s);
        EXPECT_TRUE(Replace());
    }
    EXPECT_TRUE(tree.Read(u"cloud/a.dat"_s) == content);
    EXPECT_EQ(tree.Exists(u"cloud/a.dat.tmp"_s), !Shares('d'));
    if (Shares('d'))
        EXPECT_THAT(ErrorTexts(), IsEmpty());
    else
        EXPECT_THAT(ErrorTexts(),
                    Contains(HasSubstr("Failed to delete temp file cloud/a.dat.tmp. Error: ")));
}

INSTANTIATE_TEST_SUITE_P(EachShareMode, HeldParkedFile, EachShare, NameOf);

class HeldRepathTarget : public Sharing
{
protected:
    bool Repath()
    {
        FileLinkImporterImp importer(nullptr);
        SyncServices::FileLink link;
        link.RefId = u"1"_s;
        link.Path = u"new.tlk"_s;
        return importer.RepathFile(Cloud(u"a.tasm"_s), {link});
    }
    bool IsLeftForLater() const
    {
        return Short(log.Lines())
            .contains(u"INFO Repathing skipped for file cloud/a.tasm. File is "
                      "locked. File will be repathed after it is unlocked."_s);
    }
    QByteArray Content() const { return tree.Read(u"cloud/a.tasm"_s); }
};

// The test plug-in puts a new file in the old one's place, once, and cannot do so while the old one
// is open: then the failure is the plug-in's.
TEST_P(HeldRepathTarget, IsLeftForLaterUnlessItsHolderSharesWriting)
{
    for (const QString& access : Accesses()) {
        SCOPED_TRACE(access.toStdString());
        Assembly(u"cloud/a.tasm"_s, {u"1 old.tlk"_s});
        log.Clear();
        {
            const HeldFile held(Cloud(u"a.tasm"_s), access, Letters());
            const PluginCallLog calls;
            EXPECT_FALSE(Repath());
            EXPECT_THAT(calls.Calls(), SizeIs(Shares('w') ? 1 : 0));
        }
        EXPECT_EQ(IsLeftForLater(), !Shares('w'));
        if (Shares('w'))
            EXPECT_THAT(ErrorTexts(),
                        Contains(HasSubstr("Failed to repath file links in file cloud/a.tasm. "
                                           "Plugin returned false.")));
        else
            EXPECT_THAT(ErrorTexts(), IsEmpty());
        EXPECT_TRUE(Content().contains("link 1 old.tlk"));

        EXPECT_TRUE(Repath());
        EXPECT_TRUE(Content().contains("link 1 new.tlk"));
    }
}

INSTANTIATE_TEST_SUITE_P(EachShareMode, HeldRepathTarget, EachShare, NameOf);

} // namespace Halvern::Test
