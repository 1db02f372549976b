// SPDX-License-Identifier: Apache-2.0

#include "FreecadFixture.h"

namespace Halvern::Test {

using namespace Qt::StringLiterals;

namespace {

class FreecadRewriter : public FreecadFixture
{
protected:
    /// The archive after its links got new paths.
    QByteArray Rewritten(const QByteArray& archive, const Links& links)
    {
        tree.File(m_file, archive);
        EXPECT_TRUE(Repath(m_file, links)) << context.lines.join(u'\n').toStdString();
        return tree.Read(m_file);
    }
};

QByteArray FileProperty(const QByteArray& path)
{
    return "<String value=\"" + path + "\"/>";
}

} // namespace

TEST_F(FreecadRewriter, OnlyTheBytesOfTheLinkChange)
{
    const auto archive = [](const QByteArray& second) {
        return Packed(Document("<!-- <XLink file=\"old.FCStd\"/> -->\n" +
                               Property("A", "XLinkList",
                                        "<XLinkSubList count=\"2\">" + XLink("old.FCStd") +
                                            "<XLink  file = 'x' name=\"&#65;\"\r\n/>" +
                                            XLink(second) + "</XLinkSubList>") +
                               Property("B", "String", FileProperty("old.FCStd"))));
    };
    EXPECT_EQ(Rewritten(archive("old.FCStd"), {L(u"Part.A#3", u"../neu/Träger & 木.FCStd")}),
              archive("../neu/Träger &amp; 木.FCStd"));
}

TEST_F(FreecadRewriter, ALinkBetweenSingleQuotationMarksStaysBetweenThem)
{
    const auto archive = [](const QByteArray& path) {
        return Packed(Document(Property("A", "XLink", "<XLink name='n' file='" + path + "'/>")));
    };
    EXPECT_EQ(Rewritten(archive("old"), {L(u"Part.A", u"it's \"<new>\"")}),
              archive("it&apos;s &quot;&lt;new&gt;&quot;"));
    EXPECT_EQ(Read(m_file), (Links{L(u"Part.A", u"it's \"<new>\"")}));
}

TEST_F(FreecadRewriter, FilesThatTheProgramLooksForFromItsOwnFolderGetAbsoluteNames)
{
    const auto archive = [](const QByteArray& path) {
        return Packed(Document(Property("ImageFile", "File", FileProperty(path))),
                      "<Document><ViewProvider name=\"P\">" +
                          Property("T", "File", FileProperty(path)) + "</ViewProvider></Document>");
    };
    const QByteArray absolute = tree.Path(u"Bilder/Foto ä.png"_s).toUtf8();
    const Links relative = {L(u"Part.ImageFile", u"../Bilder/Foto ä.png"),
                            L(u"view:P.T", u"../Bilder/Foto ä.png")};
    EXPECT_EQ(Rewritten(archive("/old/Foto ä.png"), relative), archive(absolute));
}

TEST_F(FreecadRewriter, ASecondRewriteDoesNothing)
{
    const Links links = {L(u"Part.A", u"../neu/a.FCStd"), L(u"Part.F", u"../Bilder/Foto.png")};
    const QByteArray once =
        Rewritten(Packed(Document(Property("A", "XLink", XLink("a.FCStd")) +
                                  Property("F", "File", FileProperty("/old/Foto.png")))),
                  links);
    const QDateTime time = QDateTime::fromSecsSinceEpoch(1'000'000'000);
    tree.Touch(m_file, time);
    EXPECT_TRUE(Repath(m_file, links));
    EXPECT_EQ(tree.Read(m_file), once);
    EXPECT_EQ(tree.Modified(m_file), time);
}

TEST_F(FreecadRewriter, AFileBetweenTheOthersIsReplacedWhereItStands)
{
    const auto archive = [](const QByteArray& path) {
        return Zip({{"0.brp", PatternBytes(100)},
                    {"Document.xml", Document(Property("A", "XLink", XLink(path)))},
                    {"1.brp", PatternBytes(999), false}});
    };
    EXPECT_EQ(Rewritten(archive("a.FCStd"), {L(u"Part.A", u"b/c.FCStd")}), archive("b/c.FCStd"));
}

TEST_F(FreecadRewriter, AnIdThatIsNotInTheFileFailsByNameAndNothingIsWritten)
{
    const QByteArray archive = Packed(Document(Property("A", "XLink", XLink("a.FCStd"))));
    tree.File(m_file, archive);
    EXPECT_FALSE(Repath(m_file, {L(u"Part.A", u"b.FCStd"), L(u"Part.A#2", u"c.FCStd")}));
    EXPECT_EQ(context.lines, QStringList{u"ERROR Failed to rewrite the file links of %1: the file "
                                         "has no link Part.A#2"_s.arg(tree.Path(m_file))});
    EXPECT_EQ(tree.Contents(), (FileTree::Snapshot{{m_file, archive}}));
}

} // namespace Halvern::Test
