// SPDX-License-Identifier: Apache-2.0

#include "svg/CssLinks.h"

#include <gtest/gtest.h>

namespace Halvern::Test {

namespace {

using namespace Formats::Svg;

/// "kind value {bytes}", one after the other.
std::string Found(const std::string& css)
{
    std::string found;
    for (const CssLink& link : FindCssLinks(css))
        found += std::string(link.kind) + ' ' + link.uri + " {" +
                 css.substr(link.begin, link.end - link.begin) + "} ";
    return found;
}

} // namespace

TEST(CssLinks, AddressesAreFoundBetweenQuotationMarksOfEitherKindAndWithout)
{
    EXPECT_EQ(Found("fill:url(a.svg#g);x:url( 'b c.png' ) ; y: URL(\"d.png\"),url(\n e.png\t)"),
              "url a.svg#g {a.svg#g} url b c.png {b c.png} url d.png {d.png} url e.png {e.png} ");
}

TEST(CssLinks, AnAddressWithBlanksAndWithoutQuotationMarksEndsAtTheBracket)
{
    EXPECT_EQ(Found("fill:url( li b.svg#g \n) blue; x:url(a\\  ) y:url()"),
              "url li b.svg#g {li b.svg#g} url a  {a\\ } url  {} ");
    EXPECT_EQ(Found("a:url(b\nc) d:url('e\n) g:url(h.png"), "url h.png {h.png} ");
}

TEST(CssLinks, ImportsAreFoundAndWhatFollowsThemIsNone)
{
    EXPECT_EQ(
        Found("@import 'a.css' supports(x: \"no\");@IMPORT url(b.css) screen;@import/**/\"c.css\"; "
              "p{content:'no'}"),
        "@import a.css {a.css} @import b.css {b.css} @import c.css {c.css} ");
}

TEST(CssLinks, CommentsStringsAndNamespacesAreNone)
{
    EXPECT_EQ(
        Found("/* url(a) @import 'b'; */ p{content:'url(c)';q:\"@import 'd';\"} "
              "@namespace x url(http://e); @namespace 'f'; my-url(g) urlx(h) url (i) z:url(j)"),
        "url j {j} ");
}

TEST(CssLinks, EscapesAreTakenOff)
{
    EXPECT_EQ(Found("a:url(a\\ b\\(1\\).png);b:url('\\48 \\f6 he\\'\\\n.png');c:url(\\1F332.png)"),
              "url a b(1).png {a\\ b\\(1\\).png} url Höhe'.png {\\48 \\f6 he\\'\\\n.png} "
              "url \U0001F332.png {\\1F332.png} ");
    EXPECT_EQ(Found("a:url('b\\\r\n.png') c:url('\\48\r\n.png')"),
              "url b.png {b\\\r\n.png} url H.png {\\48\r\n.png} ");
    EXPECT_EQ(Found("a:url(\\0 \\d800 \\ffffff.png)"),
              "url \xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD.png {\\0 \\d800 \\ffffff.png} ");
}

TEST(CssLinks, TextThatEndsAnywhereIsTaken)
{
    const std::string css =
        "@import 'a\\41 b.css'; /* c */ x{y:url( \"d\\\" e\" )} @namespace z url(f);";
    for (std::size_t size = 0; size <= css.size(); ++size) {
        for (const CssLink& link : FindCssLinks(std::string_view(css).substr(0, size)))
            EXPECT_TRUE(link.begin <= link.end && link.end <= size) << size;
    }
}

TEST(CssLinks, AWrittenAddressMeansTheSameWhateverIsAroundIt)
{
    const std::string uri = CssUri("a(b)'c\"&<>\\ d%20e.svg#g");
    EXPECT_EQ(uri, "a%28b%29%27c%22%26%3C%3E%5C%20d%20e.svg#g");
    for (const std::string& css :
         {"url(" + uri + ")", "url('" + uri + "')", "url(\"" + uri + "\")"})
        EXPECT_EQ(Found(css), "url " + uri + " {" + uri + "} ");
}

} // namespace Halvern::Test
