// SPDX-License-Identifier: Apache-2.0

#include "FreecadFixture.h"

namespace Halvern::Test {

namespace {

class DamagedFreecad : public FreecadFixture
{
protected:
    std::string Failure(const QByteArray& content)
    {
        return ReadFailure(m_file, content).toStdString();
    }
};

QByteArray With(QByteArray bytes, qsizetype at, const QByteArray& part)
{
    return bytes.replace(at, part.size(), part);
}

} // namespace

TEST_F(DamagedFreecad, WhatIsWrongWithADocumentIsReported)
{
    const auto xml = [](const QByteArray& text) { return Zip({{"Document.xml", text}}); };
    const QByteArray twice = Property("A", "XLink", XLink("a.FCStd"));
    QByteArray deep = "<Document>";
    for (int i = 0; i < 600; ++i)
        deep += "<Object>";
    const struct
    {
        const char* what;
        QByteArray content;
        std::string message;
    } rows[] = {
        {"nothing", "", "the file does not end as a ZIP archive does (byte 0)"},
        {"plain XML", Document({}),
         "the file does not end as a ZIP archive does (byte " +
             std::to_string(Document({}).size()) + ")"},
        {"an archive of nothing", Zip({}), "the archive holds no Document.xml"},
        {"another archive", Zip({{"content.xml", "<a/>"}}), "the archive holds no Document.xml"},
        {"two of them", Zip({{"Document.xml", "<a/>"}, {"Document.xml", "<a/>"}}),
         "two entries are named Document.xml (byte 96)"},
        {"an empty document", xml(""), "Document.xml: no element found at its byte 0"},
        {"a document cut off", xml(Document({}).left(60)),
         "Document.xml: unclosed token at its byte 39"},
        {"Latin-1", xml("<?xml version='1.0' encoding='latin1'?><Document>\xE4</Document>"),
         "Document.xml: the document is encoded as latin1, not as UTF-8 at its byte 0"},
        {"deep nesting", xml(deep), "Document.xml: nested deeper than 512 levels at its byte 4098"},
        {"a property twice", xml(Document(twice + twice)),
         "Document.xml: the property Part.A stands there twice"},
        {"a broken view", Packed(Document({}), "<a>"),
         "GuiDocument.xml: no element found at its byte 3"},
        {"a path that is too long",
         xml(Document(Property("A", "XLink", XLink(QByteArray(300, 'x'))))),
         "the path of link Part.A has 300 characters; a link can have 259"},
        {"a path that is much too long",
         xml(Document(Property("A", "XLink", XLink(QByteArray(70'000, 'x'))))),
         "Document.xml: a path of more than 64 KiB at its byte 475"},
        {"a name that is much too long",
         xml(Document(Property(QByteArray(70'000, 'n'), "XLink", XLink("a.FCStd")))),
         "Document.xml: a text of more than 64 KiB where a name is due at its byte 405"},
        {"a name that is too long",
         xml(Document(Property(QByteArray(300, 'n'), "XLink", XLink("a.FCStd")))),
         "Document.xml: the id of link Part." + std::string(300, 'n') +
             " has 305 characters; a link can have 259"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(Failure(row.content), row.message) << row.what;
}

TEST_F(DamagedFreecad, ADocumentLargerThanTheLimitIsRefusedUnread)
{
    QByteArray lie = Zip({{"Document.xml", "<Document/>"}});
    const QByteArray size = LittleEndian((256U << 20) + 1);
    lie = With(With(lie, 22, size), lie.indexOf("PK\1\2") + 24, size);
    EXPECT_EQ(Failure(lie), "Document.xml has 268435457 bytes, more than 268435456 (byte 0)");
}

TEST_F(DamagedFreecad, MoreObjectsThanCanBeKeptAreRefused)
{
    QByteArray text = "<Document>";
    for (int i = 0; i <= 1'000'000; ++i)
        text += "<Object type='' name='" + QByteArray::number(i) + "'/>";
    EXPECT_TRUE(Failure(Zip({{"Document.xml", text + "</Document>"}}))
                    .starts_with("Document.xml: more than 1000000 objects at its byte "));
}

TEST_F(DamagedFreecad, ADocumentCutAnywhereIsReported)
{
    const QByteArray good =
        Zip({{"Document.xml", "<Document/>"}, {"a.brp", "x"}}, "FreeCAD Document");
    for (qsizetype size = 0; size < good.size(); ++size)
        EXPECT_EQ(Failure(good.left(size)), "the file does not end as a ZIP archive does (byte " +
                                                std::to_string(size) + ")");
}

TEST_F(DamagedFreecad, AMalformedFileIsNotRewritten)
{
    const QByteArray bad = Zip({{"Document.xml", "<Document>"}});
    tree.File(m_file, bad);
    EXPECT_FALSE(Repath(m_file, {L(u"Part.A", u"b.FCStd")}));
    EXPECT_EQ(tree.Contents(), (FileTree::Snapshot{{m_file, bad}}));
}

} // namespace Halvern::Test
