// SPDX-License-Identifier: Apache-2.0

#include "StepFixture.h"

#include "pluginkit/FileScanner.h"

namespace Halvern::Test {

using namespace Qt::StringLiterals;

namespace {

using StepReader = StepFixture;

} // namespace

TEST_F(StepReader, AReferenceIsOneLinkNamedByItsInstance)
{
    EXPECT_EQ(Data(Reference("Teil 1.stp")), (Links{LinkTo(u"#2", u"Teil 1.stp")}));
    EXPECT_EQ(Data(Reference("../Gr\\X2\\00F600DF\\X0\\e/it''s 木.stp")),
              (Links{LinkTo(u"#2", u"../Größe/it's 木.stp")}));
    EXPECT_EQ(Data(Reference("/lib/a.stp")), (Links{LinkTo(u"#2", u"/lib/a.stp")}));
    EXPECT_EQ(Data(Reference("D:\\\\lib\\\\a.stp")), (Links{LinkTo(u"#2", u"D:/lib/a.stp")}));
    EXPECT_EQ(Data(Reference("file:///lib/a%20b.stp")), (Links{LinkTo(u"#2", u"/lib/a b.stp")}));
    EXPECT_EQ(Data(Reference("FILE:///lib/a.stp")), (Links{LinkTo(u"#2", u"/lib/a.stp")}));
}

TEST_F(StepReader, StatementsAreFoundHoweverTheyAreWritten)
{
    EXPECT_EQ(Data("/* #1=DOCUMENT_FILE('no'); */ #10 /* ; */ = DOCUMENT\n"
                   ";\n#11=PRODUCT('#12=EXTERNAL_SOURCE(''no'');',\"0F\");"
                   "#13\r\n=\tAPPLIED_EXTERNAL_IDENTIFICATION_ASSIGNMENT /* ' */ (\r\n"
                   "  'a long \r\nname.stp' /* it's */ , #14 , #15 , ( #16 ) ) ;#14=X();"),
              (Links{LinkTo(u"#13", u"a long name.stp")}));
}

TEST_F(StepReader, OtherStatementsAreNoLinks)
{
    EXPECT_EQ(Data(""), Links{});
    EXPECT_EQ(Data("#1=applied_external_identification_assignment('a.stp',#2,#3,(#4));\n"
                   "#5=APPLIED_EXTERNAL_IDENTIFICATION_ASSIGNMENTS('a.stp');\n"
                   "#6=EXTERNAL_SOURCE(IDENTIFIER('a.stp'));\n"
                   "#7=(A('x')DOCUMENT_FILE('a.stp')B());\n"
                   "#8=APPLIED_EXTERNAL_IDENTIFICATION_ASSIGNMENT($,#2,#3,(#4));\n"
                   "#9=APPLIED_EXTERNAL_IDENTIFICATION_ASSIGNMENT('',#2,#6000,(#4));\n"),
              Links{});
}

TEST_F(StepReader, AddressesAndFoldersAreNoLinks)
{
    EXPECT_EQ(Data(Reference("http://host/a.stp")), Links{});
    EXPECT_EQ(Data(Reference("urn:x:y")), Links{});
    tree.Folder(u"p/parts"_s);
    EXPECT_EQ(Data(Reference("parts")), Links{});
    EXPECT_EQ(Data(Reference("../")), Links{});
}

TEST_F(StepReader, TheStringThatReadersFollowIsTheLink)
{
    const auto data = [](const QByteArray& assigned, const QByteArray& document,
                         const QByteArray& source) {
        return "#2=APPLIED_EXTERNAL_IDENTIFICATION_ASSIGNMENT('" + assigned +
               "',#8,#3,(#1));\n#1=DOCUMENT_FILE('" + document +
               "','',$,#9,'',$);\n#3=EXTERNAL_SOURCE(IDENTIFIER('" + source + "'));\n";
    };
    // Nothing of it is there.
    EXPECT_EQ(Data(data("x.stp", "b.stp", "c.stp")), (Links{LinkTo(u"#2", u"x.stp")}));
    EXPECT_EQ(Data(data("", "b.stp", "c.stp")), (Links{LinkTo(u"#2 source", u"c.stp")}));
    EXPECT_EQ(Data(data("", "DOC-17", "")), Links{});
    tree.File(u"p/b.stp"_s);
    EXPECT_EQ(Data(data("x.stp", "b.stp", "c.stp")), (Links{LinkTo(u"#2 document", u"b.stp")}));
    EXPECT_EQ(Data(data("", "b.stp", "c.stp")), (Links{LinkTo(u"#2 document", u"b.stp")}));
    EXPECT_EQ(Data(data("", "b.stp", "")), (Links{LinkTo(u"#2 document", u"b.stp")}));
    tree.File(u"p/x.stp"_s).File(u"p/c.stp"_s);
    EXPECT_EQ(Data(data("x.stp", "b.stp", "c.stp")), (Links{LinkTo(u"#2", u"x.stp")}));
    EXPECT_EQ(Data(data("", "b.stp", "c.stp")), (Links{LinkTo(u"#2 source", u"c.stp")}));
}

TEST_F(StepReader, ADocumentThatStandsAloneIsALinkWhereItLeadsToAFile)
{
    tree.File(u"p/b.pdf"_s);
    EXPECT_EQ(Data("#1=DOCUMENT_FILE('b.pdf','',$,#9,'',$);#2=DOCUMENT_FILE('DOC-17','',$,#9);"),
              (Links{LinkTo(u"#1 document", u"b.pdf")}));
}

TEST_F(StepReader, TwoPartsInOneFileAreTwoLinks)
{
    EXPECT_EQ(Data(Reference("a.stp") +
                   "#5=APPLIED_EXTERNAL_IDENTIFICATION_ASSIGNMENT('a.stp',#8,#3,(#1));"),
              (Links{LinkTo(u"#2", u"a.stp"), LinkTo(u"#5", u"a.stp")}));
}

TEST_F(StepReader, LinksAreFoundAcrossTheEndsOfBlocks)
{
    const auto block = static_cast<qsizetype>(PluginKit::FileScanner::BlockSize);
    const QByteArray reference = Reference("it''s.stp");
    for (qsizetype shift = 0; shift < reference.size(); ++shift) {
        const qsizetype before = File("").indexOf("ENDSEC;\nEND") + 4;
        const QByteArray filler = "/*" + QByteArray(block - before - shift, 'x') + "*/";
        ASSERT_EQ(Data(filler + reference), (Links{LinkTo(u"#2", u"it's.stp")})) << shift;
    }
}

TEST_F(StepReader, ReadingLeavesTheFileAlone)
{
    const QDateTime time = QDateTime::fromSecsSinceEpoch(1'000'000'000);
    Data(Reference("b.stp"));
    tree.Touch(m_name, time);
    Read(m_name);
    EXPECT_EQ(tree.Contents(), (FileTree::Snapshot{{m_name, File(Reference("b.stp"))}}));
    EXPECT_EQ(tree.Modified(m_name), time);
}

} // namespace Halvern::Test
