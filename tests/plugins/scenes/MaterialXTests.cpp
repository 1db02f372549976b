// SPDX-License-Identifier: Apache-2.0

#include "ScenesFixture.h"

namespace Halvern::Test {

using MaterialXDocuments = ScenesFixture;

namespace {

const QString File = u"plan/a.mtlx"_s;

QByteArray Input(const QByteArray& name, const QByteArray& value, const QByteArray& more = {})
{
    return "<image name='" + name + "'><input name='file' type='filename' value='" + value + "'" +
           more + "/></image>";
}

} // namespace

TEST_F(MaterialXDocuments, ValuesOfTheTypeFilenameAndIncludesAreLinks)
{
    EXPECT_EQ(LinksOf(File, MaterialX("<xi:include href='lib/oak.mtlx' xmlns:xi='i'/>"
                                      "<nodegraph name='g'>" +
                                      Input("a", "tex/R&amp;D 50%.png") + Input("b", "") +
                                      "<tiledimage name='t'><parameter name='file' "
                                      "type='filename' value='..\\b.png'/><input name='s' "
                                      "type='string' value='c.png'/></tiledimage></nodegraph>")),
              (Links{L(u"include/href", u"lib/oak.mtlx"), L(u"g/a/file/value", u"tex/R&D 50%.png"),
                     L(u"g/t/file/value", u"../b.png")}));
}

TEST_F(MaterialXDocuments, OnlyTheBytesOfTheNameChange)
{
    const QByteArray text = MaterialX(Input("a", "o.png") + Input("b", "o.png") + "<!-- o.png -->");
    EXPECT_EQ(Rewritten(File, text, {L(u"b/file/value", u"../n & <m>/100% #1.png")}),
              MaterialX(Input("a", "o.png") + Input("b", "../n &amp; &lt;m&gt;/100% #1.png") +
                        "<!-- o.png -->"));
    EXPECT_EQ(Read(File),
              (Links{L(u"a/file/value", u"o.png"), L(u"b/file/value", u"../n & <m>/100% #1.png")}));
}

TEST_F(MaterialXDocuments, ThePrefixThatIsNearestCounts)
{
    EXPECT_EQ(
        LinksOf(File, "<materialx fileprefix='../img/'><nodegraph name='g' fileprefix='x/t_'>" +
                          Input("a", "a.png") + Input("b", "b.png", " fileprefix=''") +
                          "</nodegraph>" + Input("c", "c.png") + "</materialx>"),
        (Links{L(u"g/a/file/value", u"x/t_a.png"), L(u"g/b/file/value", u"b.png"),
               L(u"c/file/value", u"../img/c.png")}));
}

TEST_F(MaterialXDocuments, APrefixStaysWhereItCanAndGoesWhereItIsInTheWay)
{
    const auto text = [](const QByteArray& prefix, const QByteArray& a, const QByteArray& b) {
        return "<materialx  fileprefix=\"" + prefix + "\">" + Input("a", a) + Input("b", b) +
               Input("e", "") + "</materialx>";
    };
    const QByteArray before = text("../img/", "a.png", "&lt;UDIM&gt;.png");
    EXPECT_EQ(Rewritten(File, before, {L(u"a/file/value", u"../img/n/a.png")}),
              text("../img/", "n/a.png", "&lt;UDIM&gt;.png"));
    EXPECT_EQ(Rewritten(File, before, {L(u"a/file/value", u"img/a.png")}),
              text("", "img/a.png", "../img/&lt;UDIM&gt;.png"));
    EXPECT_EQ(Read(File),
              (Links{L(u"a/file/value", u"img/a.png"), L(u"b/file/value", u"../img/<UDIM>.png")}));
}

TEST_F(MaterialXDocuments, TheSourceOfAnImplementationIsALinkWhereItIsThere)
{
    const QByteArray text = MaterialX("<implementation name='i' file='a.osl'/>"
                                      "<implementation name='j' file='stdlib/b.osl'/>");
    tree.File(u"plan/a.osl"_s);
    EXPECT_EQ(LinksOf(File, text), (Links{L(u"i/file", u"a.osl")}));
    EXPECT_EQ(Rewritten(File, text, {L(u"j/file", u"n.osl")}),
              QByteArray(text).replace("stdlib/b.osl", "n.osl"));
}

} // namespace Halvern::Test
