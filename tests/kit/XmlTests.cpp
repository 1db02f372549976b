// SPDX-License-Identifier: Apache-2.0

#include "pluginkit/FormatError.h"
#include "pluginkit/Xml.h"

#include <gtest/gtest.h>

namespace Halvern::Test {

namespace {

using namespace PluginKit;

/// Writes down what it is told, every place as the text that stands there.
class Recorder : public XmlVisitor
{
public:
    explicit Recorder(std::string_view document) : m_document(document) {}

    void Start(const XmlElement& element) override
    {
        log += '+' + std::string(element.name) + '[' + Between(element.begin, element.end) + ']';
        for (const XmlAttribute& attribute : element.attributes)
            log += ' ' + std::string(attribute.name) + '=' + std::string(attribute.value) + '{' +
                   Between(attribute.begin, attribute.end) + '}';
        log += '\n';
    }
    void End(std::string_view name, std::size_t begin) override
    {
        log += '-' + std::string(name) + '[' + Between(begin, begin + 2) + "]\n";
    }
    void Instruction(std::string_view target, std::size_t begin, std::size_t end) override
    {
        log += '?' + std::string(target) + '{' + Between(begin, end) + "}\n";
    }

    std::string log;

private:
    std::string Between(std::size_t begin, std::size_t end) const
    {
        return std::string(m_document.substr(begin, end - begin));
    }

    std::string_view m_document;
};

std::string Log(const std::string& document)
{
    Recorder recorder(document);
    try {
        ReadXml(document, recorder);
    } catch (const FormatError& error) {
        return error.what() + (" @" + std::to_string(error.Position().value()));
    }
    return recorder.log;
}

std::string Nested(std::size_t levels)
{
    std::string text;
    for (std::size_t i = 0; i < levels; ++i)
        text += "<a>";
    for (std::size_t i = 0; i < levels; ++i)
        text += "</a>";
    return text;
}

} // namespace

TEST(XmlPlaces, EveryAttributeIsFoundWhereItStands)
{
    EXPECT_EQ(
        Log("<?xml version='1.0'?>\n<a \tb = 'x>y'\r\n c=\"'&#x48;&amp;&gt;'\" ><d e=\"\"/></a>"),
        "+a[<a \tb = 'x>y'\r\n c=\"'&#x48;&amp;&gt;'\" >] b=x>y{x>y} "
        "c='H&>'{'&#x48;&amp;&gt;'}\n"
        "+d[<d e=\"\"/>] e={}\n-d[</]\n-a[</]\n");
}

TEST(XmlPlaces, PlacesCountBytesWhateverStandsBefore)
{
    EXPECT_EQ(Log("\xEF\xBB\xBF<!-- <b c='no'/> äöü木 --><a ü=\"木\"><![CDATA[<b c='no'/>]]>ä<b "
                  "c='ß'/></a>"),
              "+a[<a ü=\"木\">] ü=木{木}\n+b[<b c='ß'/>] c=ß{ß}\n-b[</]\n-a[</]\n");
}

TEST(XmlPlaces, InstructionsAreTold)
{
    EXPECT_EQ(Log("<?xml-stylesheet \n href='a.css' type='text/css'?><a><?php?></a>"),
              "?xml-stylesheet{href='a.css' type='text/css'}\n+a[<a>]\n?php{}\n-a[</]\n");
}

TEST(XmlPlaces, EntitiesOfTheDocumentAreReplacedInAttributesOnly)
{
    EXPECT_EQ(Log("<!DOCTYPE a [<!ENTITY base 'http://x'><!ENTITY e '<b c=\"1\"/>'>"
                  "<!ATTLIST a added CDATA 'by default'>]>"
                  "<a ns=\"&base;/y\">&e;</a>"),
              "+a[<a ns=\"&base;/y\">] ns=http://x/y{&base;/y}\n-a[</]\n");
}

TEST(XmlPlaces, AreTheSameInALargeDocument)
{
    // The parser does not get it as a whole: tags, long and short, lie where its pieces end.
    std::string document = "<a>";
    std::string expected = "+a[<a>]\n";
    for (std::size_t i = 0; i < 60; ++i) {
        const std::string value(i == 40 ? 3'000'000 : 1'999 * i, 'v');
        const std::string tag = "<b c='" + value + "'>";
        document += tag + std::string(7'919, 't') + "<!--" + value + "--><?d " + value + "?></b>";
        expected += "+b[" + tag + "] c=" + value + '{' + value + "}\n?d{" + value + "}\n-b[</]\n";
    }
    EXPECT_TRUE(Log(document + "</a>") == expected + "-a[</]\n");
    EXPECT_EQ(Log(document + "</b>"), "mismatched tag @" + std::to_string(document.size() + 2));
    EXPECT_EQ(Log(document + "<b"), "unclosed token @" + std::to_string(document.size()));
}

TEST(XmlPlaces, NothingOutsideIsRead)
{
    EXPECT_EQ(Log("<!DOCTYPE a SYSTEM 'file:///etc/passwd' [<!ENTITY e SYSTEM '/etc/passwd'>]>"
                  "<a>&e;</a>"),
              "+a[<a>]\n-a[</]\n");
}

TEST(XmlPlaces, WhatIsNotWellFormedIsReportedWithItsPlace)
{
    const struct
    {
        const char* what;
        std::string document;
        const char* message;
    } rows[] = {
        {"nothing", "", "no element found @0"},
        {"a text", "hello", "syntax error @0"},
        {"cut off in a tag", "<a b='c'", "unclosed token @0"},
        {"cut off after a tag", "<a>", "no element found @3"},
        {"tags that do not match", "<a><b></a>", "mismatched tag @8"},
        {"two roots", "<a/><b/>", "junk after document element @4"},
        {"an attribute twice", "<a b='1' b='2'/>", "duplicate attribute @9"},
        {"an unknown entity", "<a b='&x;'/>", "undefined entity @0"},
        {"a NUL", std::string("<a b='\0'/>", 10), "not well-formed (invalid token) @6"},
        {"a byte that is no UTF-8", "<a b='\xFF'/>", "not well-formed (invalid token) @6"},
        {"Latin-1", "<?xml version='1.0' encoding='ISO-8859-1'?><a>\xE4</a>",
         "the document is encoded as ISO-8859-1, not as UTF-8 @0"},
        {"UTF-16 with a mark", std::string("\xFF\xFE<\0a\0/\0>\0", 10),
         "the document is not encoded as UTF-8 @0"},
        {"UTF-16 without", std::string("<\0a\0/\0>\0", 8),
         "the document is not encoded as UTF-8 @0"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(Log(row.document), row.message) << row.what;
}

TEST(XmlPlaces, NestingIsBounded)
{
    EXPECT_FALSE(Log(Nested(MaxXmlNesting)).starts_with("nested"));
    EXPECT_EQ(Log(Nested(MaxXmlNesting + 1)), "nested deeper than 512 levels @1536");
    EXPECT_EQ(Log(Nested(1'000'000)), "nested deeper than 512 levels @1536");
}

TEST(XmlPlaces, EntitiesThatBreedAreRefused)
{
    std::string document = "<!DOCTYPE a [<!ENTITY e0 'aaaaaaaaaa'>";
    for (int i = 1; i < 10; ++i) {
        const std::string inner = "&e" + std::to_string(i - 1) + ";";
        document += "<!ENTITY e" + std::to_string(i) + " '";
        for (int j = 0; j < 10; ++j)
            document += inner;
        document += "'>";
    }
    document += "]><a b='&e9;'/>";
    EXPECT_TRUE(Log(document).starts_with("limit on input amplification factor")) << Log(document);
}

TEST(XmlPlaces, ALargeDocumentMayNotMakeItsEntitiesLarger)
{
    // A hundred times the document, which the parser would let pass, fills the memory.
    constexpr std::size_t size = std::size_t(1) << 20;
    std::string document = "<!DOCTYPE a [<!ENTITY e '" + std::string(size, 'x') + "'>]><a ";
    for (int i = 0; i < 20; ++i)
        document += " b" + std::to_string(i) + "='&e;'";
    document += "/>";
    EXPECT_TRUE(Log(document).starts_with("limit on input amplification factor"));
    EXPECT_TRUE(Log("<!DOCTYPE a [<!ENTITY e 'xxxxxxxxxx'>]><a b='&e;&e;&e;&e;&e;&e;&e;&e;'/>")
                    .starts_with("+a["));
}

TEST(XmlPlaces, AttributesOfATagAndLengthsOfNamesAreBounded)
{
    const auto tag = [](std::size_t attributes) {
        std::string text = "<!DOCTYPE a [<!-- don't --><!ENTITY e '<b>'>]><!-- <b \" --><?p <b '?>"
                           "<a><![CDATA[<b ']]><c";
        for (std::size_t i = 0; i < attributes; ++i)
            text += " a" + std::to_string(i) + "='>='";
        return text + "/></a>";
    };
    EXPECT_TRUE(Log(tag(MaxXmlAttributes)).ends_with("-a[</]\n"));
    EXPECT_EQ(Log(tag(MaxXmlAttributes + 1)),
              "a tag with more than 500000 attributes @" + std::to_string(tag(0).find("<c")));
    const std::string name(MaxXmlName, 'n');
    EXPECT_TRUE(Log('<' + name + ' ' + name + "='1'/>").starts_with("+n"));
    EXPECT_EQ(Log('<' + name + "n/>"), "a name of more than 4096 bytes @0");
    EXPECT_EQ(Log("<a " + name + "n='1'/>"), "a name of more than 4096 bytes @0");
}

TEST(XmlPlaces, WhatTheParserKeepsIsBounded)
{
    std::string document = "<!DOCTYPE a [";
    for (int i = 0; i < 800'000; ++i)
        document.append("<!ENTITY n").append(std::to_string(i)).append(" ''>");
    EXPECT_TRUE(Log(document + "]><a/>")
                    .starts_with("more names, attributes and entities than the memory for them"));
}

TEST(XmlPlaces, AsciiIsReadUnderTheNameOfEveryEncodingThatHoldsIt)
{
    for (const char* encoding : {"ISO-8859-1", "windows-1252", "us-ascii", "latin1"})
        EXPECT_EQ(
            Log(std::string("<?xml version='1.0' encoding='") + encoding + "'?><a b='&#228;'/>"),
            "+a[<a b='&#228;'/>] b=\xC3\xA4{&#228;}\n-a[]\n")
            << encoding;
}

TEST(XmlPlaces, WhatTheVisitorThrowsComesThrough)
{
    class Thrower : public XmlVisitor
    {
    public:
        void Start(const XmlElement&) override { throw FormatError("enough", 7); }
        void End(std::string_view, std::size_t) override { ADD_FAILURE(); }
    };
    Thrower thrower;
    try {
        ReadXml("<a/>", thrower);
        ADD_FAILURE();
    } catch (const FormatError& error) {
        EXPECT_STREQ(error.what(), "enough");
        EXPECT_EQ(error.Position(), 7U);
    }
}

TEST(XmlText, IsDecodedWithThePlaceOfEveryByte)
{
    const std::string document = "<s>a&lt;&#xe4;<!-- x --><![CDATA[b&amp;]]><?p?>&own;c</s>";
    const XmlText text = DecodeXmlText(document, 3, document.size() - 4);
    EXPECT_EQ(text.text, "a<äb&amp;&own;c");
    ASSERT_EQ(text.places.size(), text.text.size() + 1);
    EXPECT_EQ(document.substr(text.places[1], 4), "&lt;");
    EXPECT_EQ(document.substr(text.places[2], 6), "&#xe4;");
    EXPECT_EQ(text.places[3], text.places[2]); // the second byte of one character
    EXPECT_EQ(document.substr(text.places[4], 6), "b&amp;");
    EXPECT_EQ(document.substr(text.places.back()), "</s>");
}

TEST(XmlText, EndsWhereSomethingElseBegins)
{
    const std::string document = "<s>a<!-- x --><![CDATA[bc]]></s>";
    const XmlText text = DecodeXmlText(document, 3, document.size() - 4);
    EXPECT_EQ(text.text, "abc");
    EXPECT_EQ(document.substr(text.EndOf(1), 4), "<!--");
    EXPECT_EQ(document.substr(text.EndOf(2), 1), "c");
    EXPECT_EQ(document.substr(text.EndOf(3)), "]]></s>");
}

TEST(XmlText, EscapesWhatAnAttributeCannotHold)
{
    const std::string text = "<Träger> & \"Maße\"\t'1'";
    const std::string escaped = EscapeXmlAttribute(text);
    EXPECT_EQ(escaped, "&lt;Träger&gt; &amp; &quot;Maße&quot;&#9;&apos;1&apos;");
    EXPECT_EQ(DecodeXmlText(escaped, 0, escaped.size()).text, text);
    EXPECT_EQ(Log("<a b=\"" + escaped + "\"/>"),
              "+a[<a b=\"" + escaped + "\"/>] b=" + text + '{' + escaped + "}\n-a[]\n");
}

TEST(XmlText, ThatNoDocumentCanHoldIsRefused)
{
    for (const char* text : {"a\x10"
                             "b",
                             "a\x1F", "\uFFFE",
                             "a\uFFFF"
                             "b"}) {
        EXPECT_TRUE(Log(std::string("<a b=\"") + text + "\"/>").starts_with("not well-formed"))
            << text;
        EXPECT_THROW(EscapeXmlAttribute(text), FormatError) << text;
    }
    for (const char* text : {"\x7F", "\uFFFD", "\U0001F333"})
        EXPECT_EQ(Log("<a b=\"" + EscapeXmlAttribute(text) + "\"/>"),
                  Log(std::string("<a b=\"") + text + "\"/>"));
}

} // namespace Halvern::Test
