// SPDX-License-Identifier: Apache-2.0

// Addresses that are seen from what xml:base says.

#include "SvgFixture.h"

namespace Halvern::Test {

using namespace Qt::StringLiterals;

namespace {

using SvgBase = SvgFixture;

struct Row
{
    const char* name;
    const char* base;
    const char* href;
    /// Null for no link.
    const char* path;
};

const Row Rows[] = {
    {"a folder", "img/", "a.png", "img/a.png"},
    {"a file in a folder", "img/other.svg", "a.png", "img/a.png"},
    {"a name beside the document", "other.svg", "a.png", "a.png"},
    {"a folder above", "../img/", "a.png", "../img/a.png"},
    {"a way back", "img/", "../a.png", "a.png"},
    {"encoded", "m%C3%B6 x/", "a%20b.png", "mö x/a b.png"},
    {"empty", "", "a.png", "a.png"},
    {"a fragment", "#x", "a.png", "a.png"},
    {"absolute", "/lib/img/", "a.png", "/lib/img/a.png"},
    {"a file URI", "file:///lib/img/", "a.png", "/lib/img/a.png"},
    {"on the web", "http://example.org/", "a.png", nullptr},
    {"on the web, a whole address", "http://example.org/", "file:///lib/a.png", "/lib/a.png"},
    {"an absolute address", "img/", "/lib/a.png", "/lib/a.png"},
    {"a whole address", "img/", "file:///lib/a.png", "/lib/a.png"},
    {"embedded data", "img/", "data:,x", nullptr},
    {"a fragment of the document", "img/", "#x", nullptr},
};

} // namespace

TEST_F(SvgBase, AddressesAreSeenFromIt)
{
    for (const Row& row : Rows) {
        const QByteArray base = row.base;
        const Links expected =
            row.path ? Links{{u"image/href"_s, QString::fromUtf8(row.path)}} : Links();
        EXPECT_EQ(LinksOf("<g xml:base='" + base + "'><image href='" + row.href + "'/></g>"),
                  expected)
            << row.name;
        EXPECT_EQ(LinksOf("<image xml:base='" + base + "' href='" + row.href + "'/>"), expected)
            << row.name;
    }
}

TEST_F(SvgBase, TheNearestOneIsSeenFromThoseAroundIt)
{
    EXPECT_EQ(LinksOf("<g xml:base='a/'><g xml:base='b/'><image href='1'/>"
                      "<g xml:base='http://example.org/'><g xml:base='c/'><image href='2'/></g>"
                      "<g xml:base='file:///d/'><image href='3'/></g></g></g>"
                      "<style>p{fill:url(4)}</style><rect style='fill:url(5)'/></g>"
                      "<image href='6'/>"),
              (Links{{u"image/href"_s, u"a/b/1"_s},
                     {u"image/href#3"_s, u"/d/3"_s},
                     {u"style/url"_s, u"a/4"_s},
                     {u"rect/style/url"_s, u"a/5"_s},
                     {u"image/href#4"_s, u"6"_s}}));
}

TEST_F(SvgBase, NewAddressesAreSeenFromIt)
{
    const struct
    {
        const char* base;
        const char16_t* path;
        const char* href;
    } rows[] = {
        {"img/", u"img/b c.png", "b%20c.png"},
        {"img/", u"tex/b.png", "../tex/b.png"},
        {"img/deep/", u"../b.png", "../../../b.png"},
        {"img/", u"/lib/b.png", "file:///lib/b.png"},
        {"#x", u"tex/b.png", "tex/b.png"},
    };
    for (const auto& row : rows) {
        const QByteArray before = Svg(QByteArray("<g xml:base='") + row.base +
                                      "'><image href='a.png#x'/></g><image href='c.png'/>");
        QByteArray after = before;
        after.replace("a.png", row.href);
        const QString path = QString::fromUtf16(row.path);
        EXPECT_EQ(ResolverFixture::Rewritten(u"a.svg"_s, before, {{u"image/href"_s, path}}), after);
        EXPECT_EQ(Read(u"a.svg"_s).value(0).second, path) << row.base;
    }
}

TEST_F(SvgBase, BelowOneThatIsAbsoluteOrAboveNewAddressesStillLeadToTheFile)
{
    const QByteArray above = Svg("<g xml:base='../img/'><image href='a.png'/></g>");
    const QString file = u"p/a.svg"_s;
    EXPECT_EQ(ResolverFixture::Rewritten(file, above, {{u"image/href"_s, u"tex/b.png"_s}}),
              Svg("<g xml:base='../img/'><image href='../p/tex/b.png'/></g>"));
    const QByteArray absolute = Svg("<g xml:base='/lib/'><image href='a.png'/></g>");
    const QByteArray result =
        ResolverFixture::Rewritten(file, absolute, {{u"image/href"_s, u"tex/b.png"_s}});
    EXPECT_TRUE(result.contains("href='file://" + tree.Path(u"p/tex/b.png"_s).toUtf8() + "'"))
        << result.toStdString();
}

TEST_F(SvgBase, OneThatIsLongerThanAnyFolderIsRefused)
{
    const auto failure = [&](const QByteArray& content) {
        return ReadFailure(u"a.svg"_s, content).toStdString();
    };
    const QByteArray part = QByteArray(3000, 'x') + '/';
    EXPECT_EQ(failure("<svg xml:base='" + QByteArray(5000, 'x') + "'/>"),
              "a base of more than 4 KiB (byte 15)");
    EXPECT_EQ(failure("<svg xml:base='" + part + "'><g xml:base='" + part + "'/></svg>"),
              "a base of more than 4 KiB (byte 3031)");
}

} // namespace Halvern::Test
