// SPDX-License-Identifier: Apache-2.0

#include "ScribusFixture.h"

namespace Halvern::Test {

using namespace Qt::StringLiterals;

namespace {

class ScribusRewriter : public ScribusFixture
{
protected:
    QByteArray Changed(const QByteArray& objects, const Links& links)
    {
        return Rewritten(m_name, File(objects), links);
    }
};

} // namespace

TEST_F(ScribusRewriter, OnlyThePathThatIsNamedChanges)
{
    EXPECT_EQ(Changed(Picture("1", "a.png") + "<X  PFILE = 'a.png' />" + Picture("2", "a.png"),
                      {LinkTo(u"PAGEOBJECT 2/PFILE", u"../Größe & <1>/\"a'.png")}),
              File(Picture("1", "a.png") + "<X  PFILE = 'a.png' />" +
                   Picture("2", "../Größe &amp; &lt;1&gt;/&quot;a&apos;.png")));
}

TEST_F(ScribusRewriter, MarksOfOldDocumentsStay)
{
    const QByteArray mark = "<ITEXT CH=\"&#x5;x&#28;\x1D\"/>";
    EXPECT_EQ(Changed(mark + Picture("1", "a.png") + mark,
                      {LinkTo(u"PAGEOBJECT 1/PFILE", u"longer/a.png")}),
              File(mark + Picture("1", "longer/a.png") + mark));
}

TEST_F(ScribusRewriter, ACompressedDocumentStaysOne)
{
    const QString name = u"p/a.sla.gz"_s;
    const QByteArray changed = Rewritten(name, Packed(File(Picture("1", "a.png"))),
                                         {LinkTo(u"PAGEOBJECT 1/PFILE", u"b/a.png")});
    EXPECT_EQ(changed, Packed(File(Picture("1", "b/a.png"))));
    EXPECT_EQ(Read(name), (Links{LinkTo(u"PAGEOBJECT 1/PFILE", u"b/a.png")}));
}

TEST_F(ScribusRewriter, ANameThatIsRightAlreadyKeepsItsBytes)
{
    const QDateTime time = QDateTime::fromSecsSinceEpoch(1'000'000'000);
    tree.File(m_name, File(Picture("1", "x\\&#228;.png"))).Touch(m_name, time);
    EXPECT_TRUE(Repath(m_name, {LinkTo(u"PAGEOBJECT 1/PFILE", u"x/ä.png")}));
    EXPECT_EQ(tree.Modified(m_name), time);
}

TEST_F(ScribusRewriter, AnIdThatIsNotInTheFileFailsByName)
{
    for (const char16_t* id :
         {u"PAGEOBJECT 2/PFILE", u"PAGEOBJECT 1/PFILE2", u"PAGEOBJECT 1", u""}) {
        EXPECT_EQ(RewriteFailure(m_name, File(Picture("1", "a.png")), {LinkTo(id, u"x.png")}),
                  u"the file has no link "_s + QString::fromUtf16(id));
    }
}

} // namespace Halvern::Test
