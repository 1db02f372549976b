// SPDX-License-Identifier: Apache-2.0

#include "ScribusFixture.h"

#include "scribus/ScribusPaths.h"

namespace Halvern::Test {

using namespace Qt::StringLiterals;

namespace {

class DamagedScribus : public ScribusFixture
{
protected:
    std::string Failure(const QByteArray& content)
    {
        return ReadFailure(m_name, content).toStdString();
    }
};

} // namespace

TEST_F(DamagedScribus, WhatIsNoDocumentIsReportedWithItsPlace)
{
    EXPECT_EQ(Failure("<svg PFILE='a.png'/>"), "no document of Scribus (byte 0)");
    EXPECT_EQ(Failure("<?xml version='1.0'?><a/>"), "no document of Scribus (byte 21)");
    for (const char* content : {"", "text", "<SCRIBUS", "<SCRIBUS><a></SCRIBUS>", "<SCRIBUS>&x;"})
        EXPECT_NE(Failure(content), "") << content;
    EXPECT_EQ(Failure(Packed("<svg/>")), "no document of Scribus at byte 0 of the unpacked text");
}

TEST_F(DamagedScribus, PathsThatAreTooLongAreReported)
{
    const QByteArray file = File(Picture("1", QByteArray(5000, 'a')));
    EXPECT_EQ(Failure(file),
              "a path of more than 4096 bytes (byte " + std::to_string(file.indexOf("aaaa")) + ")");
    EXPECT_EQ(Failure(File(Picture("1", QByteArray(260, 'a')))),
              "the path of link PAGEOBJECT 1/PFILE has 260 characters; a link can have 259");
}

TEST_F(DamagedScribus, TooManyLinksAreReported)
{
    const auto count = static_cast<qsizetype>(Formats::Scribus::MaxScribusPaths) + 1;
    EXPECT_EQ(Failure(File(QByteArray("<A PFILE='a'/>").repeated(count))).substr(0, 28),
              "more than 100000 links (byte");
}

TEST_F(DamagedScribus, AFileCutOffAnywhereIsReported)
{
    const QByteArray whole = File(Picture("1", "a.png")).trimmed();
    for (const QByteArray& file : {whole, Packed(whole)}) {
        for (qsizetype size = 0; size < file.size(); ++size)
            EXPECT_NE(ReadFailure(m_name, file.left(size)), QString()) << size;
    }
}

TEST_F(DamagedScribus, NoSingleByteTurnedOverCrashesOrChangesTheFile)
{
    const QByteArray text = File(Picture("1", "a.png") + "<A CH=\"&#x5;\"/>");
    for (const QByteArray& good : {text, Packed(text)}) {
        for (qsizetype at = 0; at < good.size(); ++at) {
            for (const char with : {'<', '"', '&', ';', '#', '\0', '\x05', '\xFF'}) {
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

TEST_F(DamagedScribus, AFileThatIsMissingOrAFolderIsReported)
{
    EXPECT_FALSE(TryRead(u"none.sla"_s));
    tree.Folder(u"folder.sla"_s);
    EXPECT_FALSE(TryRead(u"folder.sla"_s));
    EXPECT_EQ(context.lines.size(), 2);
}

} // namespace Halvern::Test
