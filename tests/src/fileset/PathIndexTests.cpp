// SPDX-License-Identifier: Apache-2.0

#include "Mappings.h"
#include "fileset/PathIndex.h"

#include <QtCore/QDir>

#include <gtest/gtest.h>

#include <iterator>
#include <random>

namespace {

using namespace Halvern::FileLink;
using namespace Halvern::Test;
using namespace Qt::StringLiterals;

TEST(PathIndexing, GivesTheFirstPositionOfAPath)
{
    PathIndex index;
    EXPECT_EQ(index.Find(u"/a"_s), -1);
    index.Add(u"/b"_s, 0);
    index.Add(u"/A"_s, 1);
    index.Add(u"/a"_s, 2);
    EXPECT_EQ(index.Find(u"/a"_s), 1);
    EXPECT_EQ(index.Find(u"/./a"_s), -1);
    index.Clear();
    EXPECT_EQ(index.Find(u"/b"_s), -1);
}

TEST(PathIndexing, TellsApartWhatAComparisonTellsApart)
{
    PathIndex index;
    index.Add(u"/stra\u00dfe"_s, 0);
    index.Add(u"/strasse"_s, 1);
    EXPECT_EQ(index.Find(u"/STRASSE"_s), 1);
    EXPECT_EQ(index.Find(u"/STRA\u00dfE"_s), 0);
    EXPECT_EQ(index.Find(u"/stra\u1e9ee"_s), 0) << "the capital letter";
}

/// Two characters that a comparison holds for equal must be searched for in one place.
TEST(PathIndexing, FindsEveryCharacterInAnyLetterCase)
{
    for (char32_t code = 1; code <= 0x1ffff; ++code) {
        if (QChar::isSurrogate(code))
            continue;
        const QString text = QString::fromUcs4(&code, 1);
        PathIndex index;
        index.Add(text, 0);
        for (const char32_t other : {QChar::toLower(code), QChar::toUpper(code),
                                     QChar::toTitleCase(code), QChar::toCaseFolded(code)}) {
            const QString wanted = QString::fromUcs4(&other, 1);
            const bool same = text.compare(wanted, Qt::CaseInsensitive) == 0;
            ASSERT_EQ(index.Find(wanted), same ? 0 : -1) << std::hex << uint(code);
        }
    }
}

int Scan(const FileMappingList& files, PathSide side, const QString& path)
{
    const QString wanted = QDir::cleanPath(path);
    for (int i = 0; i < files.size(); ++i)
        if (PathOf(*files[i], side).compare(wanted, Qt::CaseInsensitive) == 0)
            return i;
    return -1;
}

QString AnyPath(std::mt19937& random)
{
    constexpr const char* paths[] = {"D:/p/a",  "D:/P/A", "D:/p/b",    "D:/p/./b",  "",
                                     "D:/p/c/", "D:/p/C", "D:/p/c/..", "D:/w/x",    "d:/W/X",
                                     "D:/p/d",  "D:/p/e", "D:/p/ss",   "D:/p/f/g/h"};
    return QString::fromLatin1(paths[random() % std::size(paths)]);
}

/// One random thing that happens to a set. Mappings are changed without the set being told.
void Disturb(std::mt19937& random, FileSet& set, FileMappingList& pool)
{
    const FileMappingPointer file = pool[qsizetype(random() % quint32(pool.size()))];
    switch (random() % 8) {
    case 0:
    case 1:
    case 2:
        set.AddFile(file);
        break;
    case 3:
        set.RemoveFile(AnyPath(random), random() % 2 == 0, random() % 2 == 0);
        break;
    case 4:
        file->SetSourceFile(AnyPath(random));
        break;
    case 5:
        file->SetTargetFile(AnyPath(random), random() % 2 == 0);
        break;
    case 6:
        file->CopyFrom(pool[qsizetype(random() % quint32(pool.size()))].get(), random() % 2 == 0,
                       true);
        break;
    default:
        // A new object may come to stand where a removed one stood.
        pool.removeOne(file);
        pool.append(MakeFile(AnyPath(random), FileMappingFlag(random() % 2), AnyPath(random)));
    }
}

TEST(FileSetIndex, AnswersLikeAWalkOverTheListWhateverHappens)
{
    for (quint32 seed = 0; seed < 300; ++seed) {
        std::mt19937 random(seed);
        FileSet set;
        FileMappingList pool;
        for (int i = 0; i < 12; ++i)
            pool.append(MakeFile(AnyPath(random), FileMapping::NoFlag, AnyPath(random)));
        for (int step = 0; step < 200; ++step) {
            Disturb(random, set, pool);
            for (int query = random() % 4; query > 0; --query) {
                const QString path = AnyPath(random);
                const FileMappingList files = set.GetFiles();
                ASSERT_EQ(set.IndexOfSourceFile(path), Scan(files, PathSide::Source, path))
                    << "seed " << seed << " step " << step;
                ASSERT_EQ(set.IndexOfTargetFile(path), Scan(files, PathSide::Target, path))
                    << "seed " << seed << " step " << step;
            }
        }
    }
}

} // namespace
