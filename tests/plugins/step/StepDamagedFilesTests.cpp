// SPDX-License-Identifier: Apache-2.0

#include "StepFixture.h"

#include "step/ExternalFiles.h"

#include <QtCore/QFile>

namespace Halvern::Test {

using namespace Qt::StringLiterals;

namespace {

class DamagedStep : public StepFixture
{
protected:
    std::string Failure(const QByteArray& content)
    {
        return ReadFailure(m_name, content).toStdString();
    }
    /// The place of a text in a file with these statements, as a failure ends.
    static std::string At(const QByteArray& data, const QByteArray& text)
    {
        return " (byte " + std::to_string(File(data).indexOf(text)) + ")";
    }
};

struct Row
{
    const char* what;
    QByteArray data;
    std::string message;
    /// What the place is that of; nothing when the message has none.
    QByteArray place;
};

const QByteArray Assignment = "#2=APPLIED_EXTERNAL_IDENTIFICATION_ASSIGNMENT";

} // namespace

TEST_F(DamagedStep, WhatDoesNotBeginAsAnExchangeFileIsReported)
{
    for (const char* content :
         {"", " \n", "solid x", "<?xml version=\"1.0\"?>", "ISO-10303-2", "iso-10303-21;",
          "\xEF\xBB\xBFISO-10303-21;", "'ISO-10303-21'", "ISO-10303-21X;"})
        EXPECT_EQ(Failure(content).substr(0, 60),
                  "no exchange file: it does not begin with ISO-10303-21 (byte ")
            << content;
    EXPECT_EQ(Failure("ISO-10303-21"), "a statement without an end (byte 0)");
    tree.File(m_name, "/* made by hand */\n ISO-10303-21 ; END-ISO-10303-21;");
    EXPECT_EQ(Read(m_name), Links{});
}

TEST_F(DamagedStep, AMalformedStatementIsReportedWithItsPlace)
{
    const Row rows[] = {
        {"an instance without a name", "#=DOCUMENT_FILE('a');", "an instance without a name",
         "=DOCUMENT_FILE('a');"},
        {"the name of an instance is endless", "#" + QByteArray(1000, '1') + "=X();",
         "the name of an instance is too long", QByteArray(1000, '1')},
        {"a reference to one with an endless name", Assignment + "('a',#99999999999999999999);",
         "the name of an instance is too long", "9999999999"},
        {"an instance defined twice", Reference("a") + Reference("b"), "#1 is defined twice",
         "#1=DOCUMENT_FILE('b'"},
        {"something that is no parameter", Assignment + "('a',\"0F\");",
         "#2 has something that is no parameter", "\"0F\""},
        {"a bracket that is not closed", Assignment + "('a',(#1);",
         "#2 has something that is no parameter", ";\nENDSEC;\nEND"},
        {"no bracket closed before the end of the statement", Assignment + "('a';",
         "#2 has something that is no parameter", ";\nENDSEC;\nEND"},
        {"too many parameters", Assignment + "('a'" + QByteArray(",$").repeated(10'000) + ");",
         "#2 has too many parameters", Assignment},
        {"too many brackets in one another", Assignment + QByteArray(100'000, '('),
         "#2 has too many parameters", Assignment},
        {"an endless name", Assignment + "('" + QByteArray(1 << 20, 'a') + "');",
         "a name of a file has more than 16384 bytes", QByteArray(1000, 'a')},
        {"a name that is too long", Reference(QByteArray(260, 'a')),
         "the path of link #2 has 260 characters; a link can have 259", ""},
        {"a NUL in a name", Reference(QByteArray("a\0b", 3)),
         "the path of link #2 holds a NUL character", ""},
        {"an escaped NUL", Reference("a\\X2\\0000\\X0\\b"),
         "the path of link #2 holds a NUL character", ""},
    };
    for (const Row& row : rows) {
        const std::string place = row.place.isEmpty() ? "" : At(row.data + "\n", row.place);
        EXPECT_EQ(Failure(File(row.data + "\n")), row.message + place) << row.what;
    }
}

TEST_F(DamagedStep, AFileCutOffAnywhereIsReported)
{
    const QByteArray whole = File("#7=P('it''s',(1.,2.)); /* c */\n" + Reference("a''b.stp"));
    const qsizetype end = whole.lastIndexOf(';') + 1;
    const QStringList messages = {
        u"no exchange file"_s,           u"a statement without an end"_s,
        u"a string without an end"_s,    u"a comment without an end"_s,
        u"an instance without a name"_s, u"the file ends before END-ISO-10303-21"_s};
    for (qsizetype size = 0; size < end; ++size) {
        const QString failure = ReadFailure(m_name, whole.left(size));
        EXPECT_TRUE(messages.contains(failure.section(u" (byte "_s, 0, 0).section(u':', 0, 0)))
            << size << ' ' << failure.toStdString();
    }
    tree.File(m_name, whole.left(end));
    EXPECT_TRUE(TryRead(m_name));
}

TEST_F(DamagedStep, NoSingleByteTurnedOverCrashesOrChangesTheFile)
{
    const QByteArray good = File(Reference("a''b.stp"));
    for (qsizetype at = 0; at < good.size(); ++at) {
        for (const char with : {'\'', '(', ')', ';', '#', '/', '*', '\\', '\0', '\xFF'}) {
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

TEST_F(DamagedStep, TooManyReferencesAreReported)
{
    QByteArray data;
    for (std::size_t i = 0; i <= 3 * Formats::Step::MaxExternalFiles; ++i)
        data += '#' + QByteArray::number(qulonglong(i)) + "=EXTERNAL_SOURCE('');";
    EXPECT_EQ(Failure(File(data)).substr(0, 31), "the file names too many files (");
}

TEST_F(DamagedStep, AnEndlessStatementIsPassedOverInBlocks)
{
    tree.File(m_name, "ISO-10303-21;#1=X(");
    ASSERT_TRUE(QFile::resize(tree.Path(m_name), qint64(1) << 28)); // a hole, which takes no space
    EXPECT_FALSE(TryRead(m_name));
    EXPECT_TRUE(context.lines.value(0).endsWith(u"a statement without an end (byte 13)"_s));
}

TEST_F(DamagedStep, AReferenceToItselfIsReadAsAnyOther)
{
    EXPECT_EQ(Data("#2=APPLIED_EXTERNAL_IDENTIFICATION_ASSIGNMENT('a.stp',#2,#2,(#2,#2));"),
              (Links{LinkTo(u"#2", u"a.stp")}));
}

TEST_F(DamagedStep, AFileThatIsMissingOrAFolderIsReported)
{
    EXPECT_FALSE(TryRead(u"none.stp"_s));
    tree.Folder(u"folder.stp"_s);
    EXPECT_FALSE(TryRead(u"folder.stp"_s));
    EXPECT_EQ(context.lines.size(), 2);
}

} // namespace Halvern::Test
