// SPDX-License-Identifier: Apache-2.0

#include "SolveSpaceFixture.h"

#include <QtCore/QFile>

namespace Halvern::Test {

using namespace Qt::StringLiterals;

namespace {

class DamagedSolveSpace : public SolveSpaceFixture
{
protected:
    std::string Failure(const QByteArray& content)
    {
        return ReadFailure(m_name, content).toStdString();
    }
    /// The place of a text in a file with these records, as a failure ends.
    static std::string At(const QByteArray& records, const QByteArray& text)
    {
        return " (byte " + std::to_string(File(records).indexOf(text)) + ")";
    }
};

struct Row
{
    const char* what;
    QByteArray records;
    std::string message;
    /// What the place is that of; nothing when the message has none.
    QByteArray place;
};

} // namespace

TEST_F(DamagedSolveSpace, WhatDoesNotBeginAsAModelIsReported)
{
    for (const QByteArray& content :
         {QByteArray(), QByteArray("\n"), QByteArray("Group.h.v=1\nAddGroup\n"),
          QByteArray("SolveSpace"), QByteArray(100, 'x') + "SolveSpaceREVa\n"})
        EXPECT_EQ(Failure(content),
                  "no model of SolveSpace: its first line has no SolveSpaceREV (byte 0)")
            << content.constData();
}

TEST_F(DamagedSolveSpace, AMalformedLineIsReportedWithItsPlace)
{
    const Row rows[] = {
        {"a word of no model", "Nonsense 1 2\n", "a line that no model has", "Nonsense"},
        {"a handle of letters", "Group.h.v=xyz\n", "a handle that is no number", "xyz"},
        {"no handle", "Request.h.v=\nRequest.file=a\n", "a handle that is no number",
         "\nRequest.file=a"},
        {"an endless handle", "Entity.h.v=" + QByteArray(1000, '1') + '\n',
         "a handle that is no number", QByteArray(1000, '1')},
        {"an endless path", Group("3", QByteArray(1 << 20, 'a')), "a path of more than 4096 bytes",
         QByteArray(1000, 'a')},
        {"a path that is too long", Group("3", QByteArray(260, 'a')),
         "the path of link group 3 has 260 characters; a link can have 259", ""},
        {"a NUL in a path", Group("3", QByteArray("a\0b", 3)),
         "the path of link group 3 holds a NUL character", ""},
    };
    for (const Row& row : rows) {
        const std::string place = row.place.isEmpty() ? "" : At(row.records, row.place);
        EXPECT_EQ(Failure(File(row.records)), row.message + place) << row.what;
    }
}

TEST_F(DamagedSolveSpace, ARecordThatIsCutOffIsReported)
{
    const QByteArray whole = "SolveSpaceREVa\n" + Group("00000003", "a.slvs");
    const qsizetype begin = whole.indexOf("impFileRel=") + 12;
    const qsizetype end = whole.indexOf("AddGroup") + 8;
    for (qsizetype size = begin; size < end; ++size)
        EXPECT_EQ(Failure(whole.left(size)),
                  "the file ends within a record (byte " + std::to_string(size) + ")");
    tree.File(m_name, whole.left(end));
    EXPECT_EQ(Read(m_name), (Links{LinkTo(u"group 00000003", u"a.slvs")}));
}

TEST_F(DamagedSolveSpace, NoSingleByteTurnedOverCrashesOrChangesTheFile)
{
    const QByteArray good =
        File(Group("00000003", "a.slvs", "b.slvs") + Picture("Request", "4", "a.png"));
    for (qsizetype at = 0; at < good.size(); ++at) {
        for (const char with : {'=', '\n', '\r', '.', '{', '\0', '\xFF'}) {
            QByteArray bad = good;
            bad[at] = with;
            tree.File(m_name, bad);
            context.lines.clear();
            const bool ok = TryRead(m_name);
            EXPECT_EQ(ok, context.lines.isEmpty()) << at;
            EXPECT_EQ(tree.Read(m_name), bad);
        }
    }
}

TEST_F(DamagedSolveSpace, TooManyLinksAreReported)
{
    QByteArray records;
    for (std::size_t i = 0; i <= Formats::SolveSpace::MaxSlvsPaths; ++i)
        records += "Group.impFileRel=a\nAddGroup\n";
    EXPECT_EQ(Failure(File(records)).substr(0, 28), "more than 100000 links (byte");
}

TEST_F(DamagedSolveSpace, AnEndlessLineIsPassedOverInBlocks)
{
    const QByteArray start = "SolveSpaceREVa\nGroup.name=";
    tree.File(m_name, start);
    ASSERT_TRUE(QFile::resize(tree.Path(m_name), qint64(1) << 28)); // a hole, which takes no space
    EXPECT_FALSE(TryRead(m_name));
    EXPECT_TRUE(context.lines.value(0).endsWith(u"within a record (byte 268435456)"_s));
}

TEST_F(DamagedSolveSpace, AFileThatIsMissingOrAFolderIsReported)
{
    EXPECT_FALSE(TryRead(u"none.slvs"_s));
    tree.Folder(u"folder.slvs"_s);
    EXPECT_FALSE(TryRead(u"folder.slvs"_s));
    EXPECT_EQ(context.lines.size(), 2);
}

} // namespace Halvern::Test
