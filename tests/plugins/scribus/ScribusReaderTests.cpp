// SPDX-License-Identifier: Apache-2.0

#include "ScribusFixture.h"

namespace Halvern::Test {

using namespace Qt::StringLiterals;

namespace {

using ScribusReader = ScribusFixture;

} // namespace

TEST_F(ScribusReader, PicturesAreLinksNamedByTheirObjects)
{
    EXPECT_EQ(Objects(Picture("17", "../Bilder/Grün &amp; &#x6728;.png") + Picture("18", "a.png") +
                      Picture("19", "a.png") + Picture("20", "")),
              (Links{LinkTo(u"PAGEOBJECT 17/PFILE", u"../Bilder/Grün & 木.png"),
                     LinkTo(u"PAGEOBJECT 18/PFILE", u"a.png"),
                     LinkTo(u"PAGEOBJECT 19/PFILE", u"a.png")}));
}

TEST_F(ScribusReader, ObjectsOfEveryKindAndOldOnesAreFound)
{
    EXPECT_EQ(
        Objects("<MASTEROBJECT ANNAME=\"Bild ü\" PFILE=\"a.png\"/>"
                "<FRAMEOBJECT PFILE=\"b.png\"/><FRAMEOBJECT PFILE=\"c.png\"/>"
                "<Pattern><PatternItem ItemID=\"5\" PFILE=\"d.png\"/></Pattern>"
                "<PAGEOBJECT ItemID=\"6\" PTYPE=\"10\" modelFile=\"e.osg\"/>"),
        (Links{LinkTo(u"MASTEROBJECT Bild ü/PFILE", u"a.png"),
               LinkTo(u"FRAMEOBJECT/PFILE", u"b.png"), LinkTo(u"FRAMEOBJECT/PFILE#2", u"c.png"),
               LinkTo(u"PatternItem 5/PFILE", u"d.png"),
               LinkTo(u"PAGEOBJECT 6/modelFile", u"e.osg")}));
}

TEST_F(ScribusReader, FurtherPicturesOfButtonsAndFilesThatAClickOpensAreLinks)
{
    EXPECT_EQ(
        Objects(Object("1", "PFILE2=\"b.png\" PFILE3=\"c.png\" ANACTYP=\"8\" ANEXTERN=\"no.pdf\"") +
                Object("2", "ANEXTERN=\"d.pdf\" ANACTYP=\"7\"") +
                Object("3", "ANACTYP=\"9\" ANEXTERN=\"https://host/e.pdf\"")),
        (Links{LinkTo(u"PAGEOBJECT 1/PFILE2", u"b.png"), LinkTo(u"PAGEOBJECT 1/PFILE3", u"c.png"),
               LinkTo(u"PAGEOBJECT 2/ANEXTERN", u"d.pdf")}));
}

TEST_F(ScribusReader, WhatIsInsideTheDocumentOrMadeByScribusIsNoLink)
{
    tree.Folder(u"p/folder"_s);
    EXPECT_EQ(Objects(Object("1", "isInlineImage=\"1\" PFILE=\"a.png\" ImageData=\"AAAA\"") +
                      "<PAGEOBJECT PTYPE=\"9\" PFILE=\"/tmp/sc1.png\"/>" + Picture("2", "folder")),
              Links{});
}

TEST_F(ScribusReader, BackslashesAreSlashes)
{
    EXPECT_EQ(PathsOf(Objects(Picture("1", "..\\x\\a.png"))), QStringList{u"../x/a.png"_s});
}

TEST_F(ScribusReader, CompressedDocumentsAreReadAndOtherCompressedFilesHaveNoLinks)
{
    for (const char16_t* name :
         {u"p/a.sla.gz", u"p/A.SLA.GZ", u"p/a.scd.gz", u"p/a.sla (2).gz", u"p/a.sla"}) {
        tree.File(QString::fromUtf16(name), Packed(File(Picture("1", "a.png"))));
        EXPECT_EQ(Read(QString::fromUtf16(name)), (Links{LinkTo(u"PAGEOBJECT 1/PFILE", u"a.png")}));
    }
    tree.File(u"p/a.tar.gz"_s, "no archive");
    EXPECT_EQ(Read(u"p/a.tar.gz"_s), Links{});
    tree.File(u"p/a.tar.gz"_s, Packed("an archive"));
    EXPECT_EQ(Read(u"p/a.tar.gz"_s), Links{});
}

TEST_F(ScribusReader, MarksOfOldDocumentsThatXmlHasNotDoNoHarm)
{
    EXPECT_EQ(
        Objects("<PAGEOBJECT PFILE=\"a.png\"><ITEXT CH=\"&#x5;x&#28;\x1D\"/></PAGEOBJECT>" +
                Picture("1", "b.png")),
        (Links{LinkTo(u"PAGEOBJECT/PFILE", u"a.png"), LinkTo(u"PAGEOBJECT 1/PFILE", u"b.png")}));
}

TEST_F(ScribusReader, ReadingLeavesTheFileAlone)
{
    const QDateTime time = QDateTime::fromSecsSinceEpoch(1'000'000'000);
    tree.File(m_name, File(Picture("1", "b.png"))).Touch(m_name, time);
    Read(m_name);
    EXPECT_EQ(tree.Contents(), (FileTree::Snapshot{{m_name, File(Picture("1", "b.png"))}}));
    EXPECT_EQ(tree.Modified(m_name), time);
}

} // namespace Halvern::Test
