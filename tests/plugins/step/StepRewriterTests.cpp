// SPDX-License-Identifier: Apache-2.0

#include "StepFixture.h"

#include "pluginkit/FileScanner.h"

namespace Halvern::Test {

using namespace Qt::StringLiterals;

namespace {

class StepRewriter : public StepFixture
{
protected:
    QByteArray Changed(const QByteArray& data, const Links& links)
    {
        return Rewritten(m_name, File(data), links);
    }
};

QByteArray Three(const QByteArray& assigned, const QByteArray& document, const QByteArray& source)
{
    return "#2=APPLIED_EXTERNAL_IDENTIFICATION_ASSIGNMENT('" + assigned +
           "',#8,#3,(#1));\n#1=DOCUMENT_FILE('" + document +
           "','',$,#9,'',$);\n#3=EXTERNAL_SOURCE(IDENTIFIER('" + source + "'));\n";
}

} // namespace

TEST_F(StepRewriter, TheStringsThatSayTheSameChangeTogetherAndNothingElseDoes)
{
    const QByteArray other = "#4=PRODUCT('a.stp',\r\n\t'a.stp' /* a.stp */ );\n";
    EXPECT_EQ(Changed(other + Reference("a.stp") + other, {LinkTo(u"#2", u"../Größe/it's.stp")}),
              File(other + Reference("../Gr\\X2\\00F6\\X0\\\\X2\\00DF\\X0\\e/it''s.stp") + other));
}

TEST_F(StepRewriter, StringsThatSaySomethingElseStay)
{
    EXPECT_EQ(Changed(Three("a.stp", "DOC-17", "parts"), {LinkTo(u"#2", u"b.stp")}),
              File(Three("b.stp", "DOC-17", "parts")));
    EXPECT_EQ(Changed(Three("a.stp", "a.stp", ""), {LinkTo(u"#2", u"b.stp")}),
              File(Three("b.stp", "b.stp", "")));
    EXPECT_EQ(Changed(Three("old.stp", "a.stp", "a.stp"), {LinkTo(u"#2 document", u"b.stp")}),
              File(Three("old.stp", "b.stp", "b.stp")));
    EXPECT_EQ(Changed(Three("", "x", "a.stp"), {LinkTo(u"#2 source", u"b.stp")}),
              File(Three("", "x", "b.stp")));
}

TEST_F(StepRewriter, EachStringThatIsNamedChangesToItsOwnPath)
{
    EXPECT_EQ(Changed(Three("a.stp", "b.stp", "a.stp"),
                      {LinkTo(u"#2", u"x.stp"), LinkTo(u"#2 document", u"y.stp")}),
              File(Three("x.stp", "y.stp", "x.stp")));
    EXPECT_EQ(Changed(Three("a.stp", "a.stp", "b.stp"),
                      {LinkTo(u"#2", u"x.stp"), LinkTo(u"#2 document", u"y.stp"),
                       LinkTo(u"#2 source", u"z.stp")}),
              File(Three("x.stp", "y.stp", "z.stp")));
}

TEST_F(StepRewriter, StringsWrittenDifferentlySayTheSame)
{
    EXPECT_EQ(Changed(Three("\\X2\\00E4\\X0\\ b.stp", "ä\n b.stp", "\\X\\E4 b.stp"),
                      {LinkTo(u"#2", u"c.stp")}),
              File(Three("c.stp", "c.stp", "c.stp")));
}

TEST_F(StepRewriter, OfTwoReferencesWithEqualNamesTheOneThatIsNamedChanges)
{
    const QByteArray second = "#5=APPLIED_EXTERNAL_IDENTIFICATION_ASSIGNMENT('a.stp',#8,#6,(#7));";
    const QByteArray changed = "#5=APPLIED_EXTERNAL_IDENTIFICATION_ASSIGNMENT('b.stp',#8,#6,(#7));";
    EXPECT_EQ(Changed(Reference("a.stp") + second, {LinkTo(u"#5", u"b.stp")}),
              File(Reference("a.stp") + changed));
}

TEST_F(StepRewriter, ASourceThatTwoReferencesShareChangesOnce)
{
    const QByteArray second = "#5=APPLIED_EXTERNAL_IDENTIFICATION_ASSIGNMENT('a.stp',#8,#3,(#7));";
    const QByteArray changed = "#5=APPLIED_EXTERNAL_IDENTIFICATION_ASSIGNMENT('b.stp',#8,#3,(#7));";
    EXPECT_EQ(
        Changed(Reference("a.stp") + second, {LinkTo(u"#2", u"b.stp"), LinkTo(u"#5", u"b.stp")}),
        File(Reference("b.stp") + changed));
}

TEST_F(StepRewriter, AnIdMeansTheSameStringWhereTheFilesAroundAreOthers)
{
    // Beside the source the document's string led to a file. Beside the copy it does not.
    EXPECT_EQ(Changed(Three("lost.stp", "b.stp", ""), {LinkTo(u"#2 document", u"sub/b.stp")}),
              File(Three("lost.stp", "sub/b.stp", "")));
    EXPECT_EQ(Changed("#1=DOCUMENT_FILE('b.pdf');", {LinkTo(u"#1 document", u"c.pdf")}),
              File("#1=DOCUMENT_FILE('c.pdf');"));
}

TEST_F(StepRewriter, ANameThatIsRightAlreadyKeepsItsBytes)
{
    const QDateTime time = QDateTime::fromSecsSinceEpoch(1'000'000'000);
    tree.File(m_name, File(Reference("x\\\\\\X2\\00E4\n\\X0\\.stp"))).Touch(m_name, time);
    EXPECT_TRUE(Repath(m_name, {LinkTo(u"#2", u"x/ä.stp")}));
    EXPECT_EQ(tree.Modified(m_name), time);
}

TEST_F(StepRewriter, AWrappedStringIsReplacedWhole)
{
    EXPECT_EQ(Changed(Reference("a very \r\nlong ''name''.stp"), {LinkTo(u"#2", u"b.stp")}),
              File(Reference("b.stp")));
}

TEST_F(StepRewriter, AFileOfManyBlocksKeepsEverythingElse)
{
    QByteArray geometry;
    const QByteArray noise = PatternBytes(2 * qint64(PluginKit::FileScanner::BlockSize)).toHex();
    for (qsizetype at = 0; at < noise.size(); at += 60)
        geometry += "#7=CARTESIAN_POINT('" + noise.mid(at, 60) + "',(0.,0.,0.));\r\n";
    EXPECT_TRUE(
        Changed(geometry + Reference("a.stp") + geometry, {LinkTo(u"#2", u"longer/b.stp")}) ==
        File(geometry + Reference("longer/b.stp") + geometry));
}

TEST_F(StepRewriter, AnIdThatIsNotInTheFileFailsByName)
{
    for (const char16_t* id : {u"#1", u"#3", u"#22", u"2", u"#2 ", u"#2 documents", u""}) {
        EXPECT_EQ(RewriteFailure(m_name, File(Reference("a.stp")), {LinkTo(id, u"x.stp")}),
                  u"the file has no link "_s + QString::fromUtf16(id));
    }
}

TEST_F(StepRewriter, ANameThatCannotBeWrittenFailsAndNothingIs)
{
    EXPECT_EQ(RewriteFailure(m_name, File(Reference("a.stp")), {LinkTo(u"#2", u"a\nb.stp")}),
              u"a string of this format cannot hold a\nb.stp"_s);
}

} // namespace Halvern::Test
