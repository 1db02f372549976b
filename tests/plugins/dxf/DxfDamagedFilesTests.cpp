// SPDX-License-Identifier: Apache-2.0

#include "DxfFixture.h"

#include <QtCore/QFile>

namespace Halvern::Test {

using namespace Qt::StringLiterals;

namespace {

class DamagedDxf : public DxfFixture
{
protected:
    std::string Failure(const QByteArray& content)
    {
        return ReadFailure(m_name, content).toStdString();
    }
    static std::string At(const QByteArray& objects, const QByteArray& text)
    {
        return " (byte " + std::to_string(File(objects).indexOf(text)) + ")";
    }
    static QByteArray Binary()
    {
        BinaryDxf file(false);
        file.Text(0, "SECTION").Text(0, "IMAGEDEF").Int16(70, 1).Zeros(10, 8);
        file.Raw(310, QByteArray("\3abc", 4)).Zeros(90, 4).Zeros(160, 8).Zeros(290, 1);
        return file.Text(5, "5A").Text(1, "a.png").Text(0, "EOF").Get();
    }
};

struct Row
{
    const char* what;
    QByteArray objects;
    std::string message;
    /// What the place is that of; nothing when the message has none.
    QByteArray place;
};

} // namespace

TEST_F(DamagedDxf, WhatDoesNotBeginAsADrawingIsReported)
{
    const std::pair<QByteArray, std::string> rows[] = {
        {"", "no drawing: it does not begin with a section (byte 0)"},
        {"  0\nLINE\n", "no drawing: it does not begin with a section (byte 4)"},
        {"  1\nSECTION\n", "no drawing: it does not begin with a section (byte 4)"},
        {"999\ncomment\n", "no drawing: it does not begin with a section (byte 0)"},
        {"solid x\n", "a line that is no group code (byte 0)"},
        {"\n0\nSECTION\n", "a line that is no group code (byte 0)"},
        {"AC1015\0", "a line that is no group code (byte 0)"},
        {QByteArray("AutoCAD Binary DXF\r\n\x1A\0", 22),
         "no drawing: it does not begin with a section (byte 0)"},
        {QByteArray("AutoCAD Binary DXF\r\n\x1A\0\1", 23),
         "the file ends within a group (byte 23)"}};
    for (const auto& [content, message] : rows)
        EXPECT_EQ(Failure(content), message) << content.constData();
}

TEST_F(DamagedDxf, AMalformedGroupIsReportedWithItsPlace)
{
    const Row rows[] = {
        {"a code of letters", "abc\nx\n", "a line that is no group code", "abc\nx"},
        {"a code with a rest", "  1x\nx\n", "a line that is no group code", "  1x\n"},
        {"an endless code", QByteArray(1000, '1') + "\nx\n", "a line that is no group code",
         QByteArray(1000, '1')},
        {"flags of letters", Block("A", "a.dwg").replace("\n4\n", "\nfour\n"),
         "flags that are no number", "four"},
        {"an endless name", Image("5A", QByteArray(1 << 20, 'a')),
         "a name of a file has more than 4096 bytes", QByteArray(1000, 'a')},
        {"a name that is too long", Image("5A", QByteArray(260, 'a')),
         "the path of link image 5A has 260 characters; a link can have 259", ""},
        {"a NUL in a name", Image("5A", QByteArray("a\0b", 3)),
         "the path of link image 5A holds a NUL character", ""},
    };
    for (const Row& row : rows) {
        const std::string place = row.place.isEmpty() ? "" : At(row.objects, row.place);
        EXPECT_EQ(Failure(File(row.objects)), row.message + place) << row.what;
    }
}

TEST_F(DamagedDxf, ABinaryGroupOfUnknownTypeIsReportedWithItsPlace)
{
    BinaryDxf file(false);
    const QByteArray start = file.Text(0, "SECTION").Get();
    for (const int code : {80, 200, 250, 500, 998, 1072, 30000, -1})
        EXPECT_EQ(Failure(BinaryDxf(file).Text(code, "x").Get()),
                  "the group code " + std::to_string(code) + " has no known type (byte " +
                      std::to_string(start.size()) + ")");
}

TEST_F(DamagedDxf, AFileCutOffAnywhereIsReported)
{
    const QStringList messages = {u"no drawing"_s,
                                  u"the file ends before EOF"_s,
                                  u"a line that is no group code"_s,
                                  u"a group code without a value"_s,
                                  u"the file ends within a group"_s,
                                  u"flags that are no number"_s};
    for (const QByteArray& whole : {File(Image("5A", "a.png") + Block("B", "b.dwg")), Binary()}) {
        const qsizetype end = whole.lastIndexOf("EOF") + 3 + (whole.endsWith('\0') ? 1 : 0);
        for (qsizetype size = 0; size < end; ++size) {
            const QString failure = ReadFailure(m_name, whole.left(size));
            EXPECT_TRUE(messages.contains(failure.section(u" (byte "_s, 0, 0).section(u':', 0, 0)))
                << size << ' ' << failure.toStdString();
        }
        tree.File(m_name, whole.left(end));
        EXPECT_TRUE(TryRead(m_name));
    }
}

TEST_F(DamagedDxf, NoSingleByteTurnedOverCrashesOrChangesTheFile)
{
    for (const QByteArray& good : {File(Image("5A", "a.png") + Block("B", "b.dwg")), Binary()}) {
        for (qsizetype at = 0; at < good.size(); ++at) {
            for (const char with : {'\n', '\r', '0', '9', '-', '\\', '\0', '\x7F', '\xFF'}) {
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
}

TEST_F(DamagedDxf, TooManyNamesAreReported)
{
    const QByteArray objects = (Group(0, "IMAGEDEF") + Group(1, "a"))
                                   .repeated(static_cast<qsizetype>(Formats::Dxf::MaxDxfNames) + 1);
    EXPECT_EQ(Failure(File(objects)).substr(0, 37), "more than 100000 names of files (byte");
}

TEST_F(DamagedDxf, AnEndlessValueIsPassedOverInBlocks)
{
    tree.File(m_name, "0\nSECTION\n1\nx");
    ASSERT_TRUE(QFile::resize(tree.Path(m_name), qint64(1) << 28)); // a hole, which takes no space
    EXPECT_FALSE(TryRead(m_name));
    EXPECT_TRUE(context.lines.value(0).endsWith(u"the file ends before EOF (byte 268435456)"_s));
}

TEST_F(DamagedDxf, AFileThatIsMissingOrAFolderIsReported)
{
    EXPECT_FALSE(TryRead(u"none.dxf"_s));
    tree.Folder(u"folder.dxf"_s);
    EXPECT_FALSE(TryRead(u"folder.dxf"_s));
    EXPECT_EQ(context.lines.size(), 2);
}

} // namespace Halvern::Test
