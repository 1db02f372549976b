// SPDX-License-Identifier: Apache-2.0

#include "RandomSets.h"

#include <iterator>

namespace Halvern::Test {

namespace {

constexpr const char* sources[] = {"D:/p/a", "D:/p/b",   "D:/p/sub/c", "D:/p/D",
                                   "D:/P/A", "D:/p/sub", "D:/p/e"};
constexpr const char* targets[] = {"",           "D:/t/a", "D:/t/b", "D:/T/A",
                                   "D:/t/sub/c", "D:/t/D", "D:/p/a"};
constexpr const char* links[] = {"a",      "B",      "sub/c", "../p/a", "D:/p/a",  "D:/t/b",
                                 "D:/T/A", "gone",   "",      "./D",    "e",       "../sub/c",
                                 "D:/x",   "D:/p/E", "../b",  "D:/p/b", "sub/../a"};

class Dice
{
public:
    explicit Dice(quint32 seed) : m_random(seed) {}
    int Roll(int sides) { return static_cast<int>(m_random() % static_cast<quint32>(sides)); }
    template <size_t Size>
    QString Pick(const char* const (&texts)[Size])
    {
        return QString::fromLatin1(texts[Roll(Size)]);
    }
    FileLinkList PickLinks(int most)
    {
        FileLinkList picked;
        for (int count = Roll(most + 1); count > 0; --count)
            picked.append({-1, QString::number(Roll(3)), Pick(links), {}});
        return picked;
    }

private:
    std::mt19937 m_random;
};

} // namespace

FileMappingList RandomMembers(quint32 seed)
{
    Dice dice(seed);
    FileMappingList members;
    for (int count = 1 + dice.Roll(6); count > 0; --count) {
        FileMappingFlag flags = FileMapping::NoFlag;
        if (dice.Roll(2) == 0)
            flags |= FileMapping::Selected;
        if (dice.Roll(8) == 0)
            flags |= FileMapping::Folder;
        members.append(MakeFile(dice.Pick(sources), flags, dice.Pick(targets)));
        members.last()->SetSourceFileLinks(dice.PickLinks(4));
        members.last()->SetTargetFileLinks(dice.PickLinks(4));
    }
    return members;
}

void AddAll(FileSet& set, const FileMappingList& members)
{
    for (const FileMappingPointer& member : members)
        set.AddFile(member);
}

QList<qsizetype> PositionsIn(const FileMappingList& members, const FileMappingList& files)
{
    QList<qsizetype> positions;
    for (const FileMappingPointer& file : files)
        positions.append(members.indexOf(file));
    return positions;
}

} // namespace Halvern::Test
