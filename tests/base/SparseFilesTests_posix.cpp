// SPDX-License-Identifier: Apache-2.0

// Files with holes: large ones that take little room, and of which only the bytes are read.

#include "CopyBytesFixture.h"
#include "CountingWatch.h"
#include "PoorerWorld.h"
#include "base/ContentHash.h"
#include "base/DataRanges.h"
#include "base/FileStatus.h"

#include <cerrno>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace Halvern::Test {

namespace {

constexpr qint64 MiB = qint64(1) << 20;
constexpr qint64 GiB = qint64(1) << 30;

class SparseFiles : public CopyBytes
{
protected:
    void SetUp() override
    {
        // Passing without holes would prove nothing.
        ASSERT_EQ(Make(u"in/probe"_s, 4 * MiB, {}).st_blocks, 0)
            << "the file system of the folder for temporary files knows no holes: choose another "
               "one by TMPDIR";
        tree.Remove(u"in/probe"_s);
    }

    /// A file of this size with a block of bytes at each of these places.
    struct stat Make(const QString& name, qint64 size, const QList<qint64>& blocks)
    {
        QFile file(tree.Path(name));
        EXPECT_TRUE(file.open(QFile::WriteOnly) && file.resize(size));
        for (const qint64 place : blocks)
            EXPECT_TRUE(file.seek(place) && file.write(PatternBytes(64 * 1024)) == 64 * 1024);
        file.close();
        return StatOf(name);
    }
    struct stat StatOf(const QString& name) const
    {
        struct stat info = {};
        EXPECT_EQ(::stat(QFile::encodeName(tree.Path(name)).constData(), &info), 0);
        return info;
    }
    QList<std::pair<quint64, quint64>> RangesOf(const QString& name) const
    {
        QList<std::pair<quint64, quint64>> ranges;
        Base::Handle handle = Base::NoHandle;
        EXPECT_TRUE(Base::OpenForReading(Native(tree.Path(name)), handle));
        const Base::DataRanges data(handle);
        for (Base::DataRange range = data.Next(0); !range.IsEmpty(); range = data.Next(range.end))
            ranges.append({range.begin, range.end});
        Base::Close(handle);
        return ranges;
    }
    Base::FileResult CopyUnchanged(Base::ContentHash* hash)
    {
        Base::FileStatus copied;
        return Base::CopyUnchangedBytes(Native(tree.Path(u"in/big"_s)),
                                        Native(tree.Path(u"out/big"_s)), copied, hash);
    }
    Base::ContentHash HashOf(const QString& name) const
    {
        Base::ContentHash hash;
        EXPECT_TRUE(Base::HashContent(Native(tree.Path(name)), hash));
        return hash;
    }

    const QList<qint64> places{0, 3 * GiB, 3 * GiB + 192 * 1024, 8 * GiB - 64 * 1024};
};

} // namespace

TEST_F(SparseFiles, OfManyGigabytesTakeTheSameBlocksAndTheirHolesAreNotRead)
{
    const struct stat source = Make(u"in/big"_s, 8 * GiB, places);
    Base::ContentHash hash;
    CountingWatch watch;
    {
        const Base::WorkWatch::Scope watching(watch);
        ASSERT_TRUE(CopyUnchanged(&hash));
    }
    // Read with their holes they are more than 30,000 pieces.
    EXPECT_LT(watch.asked, 3000);
    EXPECT_EQ(StatOf(u"out/big"_s).st_size, 8 * GiB);
    EXPECT_EQ(StatOf(u"out/big"_s).st_blocks, source.st_blocks);
    EXPECT_EQ(RangesOf(u"out/big"_s), RangesOf(u"in/big"_s));
    EXPECT_EQ(RangesOf(u"out/big"_s).size(), 4);
}

TEST_F(SparseFiles, AreCopiedByTheSystemAsWell)
{
    const struct stat source = Make(u"in/big"_s, 8 * GiB, places);
    ASSERT_TRUE(Copy(u"in/big"_s, u"out/big"_s)) << error.toStdString();
    EXPECT_EQ(StatOf(u"out/big"_s).st_size, 8 * GiB);
    EXPECT_EQ(StatOf(u"out/big"_s).st_blocks, source.st_blocks);
    EXPECT_EQ(RangesOf(u"out/big"_s), RangesOf(u"in/big"_s));
}

TEST_F(SparseFiles, HoldWhatTheyHeldWhereverTheirHolesAre)
{
    const QList<QList<qint64>> layouts = {
        {}, {0}, {MiB}, {2 * MiB - 64 * 1024}, {0, MiB}, {0, 2 * MiB - 64 * 1024}};
    for (const QList<qint64>& layout : layouts)
        for (const bool isHashed : {true, false}) {
            Make(u"in/big"_s, 2 * MiB, layout);
            const QByteArray content = tree.Read(u"in/big"_s);
            ASSERT_EQ(content.size(), 2 * MiB);
            Base::ContentHash hash;
            ASSERT_TRUE(CopyUnchanged(isHashed ? &hash : nullptr));
            EXPECT_TRUE(tree.Read(u"out/big"_s) == content) << layout.size();
            Base::ContentHasher hasher;
            hasher.Add(content.toStdString());
            EXPECT_EQ(HashOf(u"in/big"_s), hasher.Result());
            EXPECT_EQ(hash, isHashed ? hasher.Result() : Base::ContentHash());
            tree.Remove(u"out/big"_s);
        }
}

TEST_F(SparseFiles, AreCopiedWhereNobodyTellsTheirHoles)
{
    Make(u"in/big"_s, 2 * MiB, {0, MiB});
    const Base::ContentHash expected = HashOf(u"in/big"_s);
    for (const int refusal : {EINVAL, EIO}) {
        const auto work = [&] {
            Base::ContentHash hash;
            return CopyUnchanged(&hash) && hash == expected;
        };
        EXPECT_EQ(InAPoorerWorld({{SYS_lseek, refusal}}, work), Good);
        EXPECT_TRUE(tree.Read(u"out/big"_s) == tree.Read(u"in/big"_s));
        tree.Remove(u"out/big"_s);
    }
    const auto copy = [&] { return Copy(u"in/big"_s, u"out/big"_s); };
    EXPECT_EQ(InAPoorerWorld({{SYS_lseek, EINVAL}}, copy), Good);
    EXPECT_TRUE(tree.Read(u"out/big"_s) == tree.Read(u"in/big"_s));
    tree.Remove(u"out/big"_s);
    EXPECT_EQ(InAPoorerWorld({{SYS_copy_file_range, EXDEV}}, copy), Good);
    EXPECT_TRUE(tree.Read(u"out/big"_s) == tree.Read(u"in/big"_s));
    EXPECT_EQ(RangesOf(u"out/big"_s), RangesOf(u"in/big"_s));
}

TEST_F(SparseFiles, FailWithADiskThatDoesNotTakeTheirEnd)
{
    Make(u"in/big"_s, 2 * MiB, {0});
    const auto work = [&] {
        Base::ContentHash hash;
        return CopyUnchanged(&hash).Text() == "Failure to write block: No space left on device" &&
               CopyUnchanged(nullptr).Text() == "Failure to write block: No space left on device";
    };
    EXPECT_EQ(InAPoorerWorld({{SYS_ftruncate, ENOSPC}}, work), Good);
    EXPECT_FALSE(tree.Exists(u"out/big"_s));
}

TEST_F(SparseFiles, AreStoppedInTheMiddleOfAHole)
{
    Make(u"in/big"_s, 8 * GiB, {});
    Base::ContentHash hash;
    CountingWatch watch(3);
    const Base::WorkWatch::Scope watching(watch);
    EXPECT_EQ(CopyUnchanged(&hash).Problem(), Base::FileProblem::Stopped);
    EXPECT_FALSE(tree.Exists(u"out/big"_s));
    EXPECT_EQ(watch.copied.size(), 3U);
    EXPECT_LT(watch.copied.back(), std::uint64_t(GiB));
}

} // namespace Halvern::Test
