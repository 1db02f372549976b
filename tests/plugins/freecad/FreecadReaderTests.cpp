// SPDX-License-Identifier: Apache-2.0

#include "FreecadFixture.h"

namespace Halvern::Test {

using FreecadReader = FreecadFixture;

TEST_F(FreecadReader, LinksOfEveryKindOfPropertyAreFound)
{
    const QByteArray properties =
        Property("LinkedObject", "XLink", XLink("../lib/a.FCStd")) +
        Property("One", "XLinkSub",
                 "<XLink file=\"b.FCStd\" stamp=\"\" name=\"Box\" count=\"2\">"
                 "<Sub value=\"Face1\"/><Sub value=\"Face2\"/></XLink>") +
        Property("Several", "XLinkList",
                 "<XLinkSubList count=\"3\">" + XLink("a.FCStd") + XLink("") + XLink("a.FCStd") +
                     "</XLinkSubList>") +
        Property("ExpressionEngine", "ExpressionEngine",
                 "<ExpressionEngine count=\"1\" xlink=\"1\"><XLinks count=\"1\" docs=\"1\">"
                 "<DocMap name=\"T\" label=\"t\" index=\"0\"/>" +
                     XLink("t.FCStd", "Sheet") +
                     "</XLinks><Expression path=\"Length\" "
                     "expression=\"&lt;&lt;t&gt;&gt;#Sheet.x\"/></ExpressionEngine>") +
        Property("Other", "XLink", XLink("z.FCStd"));
    EXPECT_EQ(LinksOf(Document(properties)),
              (Links{L(u"Part.LinkedObject", u"../lib/a.FCStd"), L(u"Part.One", u"b.FCStd"),
                     L(u"Part.Several", u"a.FCStd"), L(u"Part.Several#3", u"a.FCStd"),
                     L(u"Part.ExpressionEngine", u"t.FCStd"), L(u"Part.Other", u"z.FCStd")}));
}

TEST_F(FreecadReader, LinksOfSpreadsheetCellsAreFound)
{
    const QByteArray cells = "<Cells Count=\"1\" xlink=\"1\"><XLinks count=\"2\" docs=\"2\">" +
                             XLink("a.FCStd") + XLink("b.FCStd") +
                             "</XLinks><Cell address=\"A1\" content=\"=a#Box.Length\"/></Cells>";
    const QByteArray xml = Document(
        "<Property name=\"cells\" type=\"Spreadsheet::PropertySheet\">" + cells + "</Property>");
    EXPECT_EQ(LinksOf(xml), (Links{L(u"Part.cells", u"a.FCStd"), L(u"Part.cells#2", u"b.FCStd")}));
}

TEST_F(FreecadReader, LinksInsideTheDocumentAreNone)
{
    EXPECT_EQ(LinksOf(Document(Property("A", "XLink", XLink("", "Other")) +
                               Property("B", "Link", "<Link value=\"Other\"/>") +
                               Property("C", "FileIncluded", "<FileIncluded file=\"x.png\"/>") +
                               Property("D", "String", "<String value=\"../lib/a.FCStd\"/>") +
                               Property("E", "XLink", XLink("https://example.com/a.FCStd")))),
              Links());
    EXPECT_TRUE(context.lines.isEmpty());
}

TEST_F(FreecadReader, NamesOfFilesThatObjectsReadAreFound)
{
    const auto file = [](const QByteArray& path) { return "<String value=\"" + path + "\"/>"; };
    EXPECT_EQ(LinksOf(Document(Property("ImageFile", "File", file("/home/x/Foto 1.png")) +
                               Property("FontFile", "File", file("Schrift &amp; ß.ttf")) +
                               Property("Empty", "File", file("")))),
              (Links{L(u"Part.ImageFile", u"/home/x/Foto 1.png"),
                     L(u"Part.FontFile", u"Schrift & ß.ttf")}));
    const QByteArray name = Property("FileName", "String", file("D:/x/Kopf.step"));
    for (const char* type : {"Part::ImportStep", "Part::ImportIges", "Part::ImportBrep"})
        EXPECT_EQ(LinksOf(Document(name, type)), (Links{L(u"Part.FileName", u"D:/x/Kopf.step")}));
    EXPECT_EQ(LinksOf(Document(name, "App::FeaturePython")), Links());
}

TEST_F(FreecadReader, FilesOfTheInstallationAndThoseThatAreWrittenAreNoLinks)
{
    const auto file = [](const QByteArray& name, const QByteArray& path) {
        return Property(name, "File", "<String value=\"" + path + "\"/>");
    };
    EXPECT_EQ(
        LinksOf(Document(
            file("A", "/usr/share/freecad/Mod/TechDraw/Templates/A4.svg") +
            file("B", "C:\\Program Files\\FreeCAD 0.20\\data\\Mod\\TechDraw\\PAT\\FCPAT.pat") +
            file("M", "/tmp/.mount_FreeCAaB1cD2/usr/Mod/TechDraw/PAT/FCPAT.pat") +
            file("C", "/home/x/.local/share/FreeCAD/Mod/Addon/x.svg") +
            file("PostProcessorOutputFile", "/home/x/out.ngc") +
            file("D", "/home/x/FreeCAD/Modelle/Foto.png"))),
        (Links{L(u"Part.D", u"/home/x/FreeCAD/Modelle/Foto.png")}));
    EXPECT_EQ(LinksOf(Document(file("FileName", "/home/x/a.stl"), "Mesh::Export")), Links());
    EXPECT_EQ(LinksOf(Document(file("FileName", "/home/x/a.stl"), "Mesh::Import")),
              (Links{L(u"Part.FileName", u"/home/x/a.stl")}));
}

TEST_F(FreecadReader, FilesOfTheViewAreFoundUnderIdsOfTheirOwn)
{
    const QByteArray gui =
        "<Document SchemaVersion=\"1\"><ViewProviderData Count=\"1\"><ViewProvider name=\"Part\">"
        "<Properties Count=\"1\">" +
        Property("TextureImage", "File", "<String value=\"/x/Holz.png\"/>") +
        "</Properties></ViewProvider></ViewProviderData></Document>";
    EXPECT_EQ(
        LinksOf(Document(Property("TextureImage", "File", "<String value=\"/x/Stein.png\"/>")),
                gui),
        (Links{L(u"Part.TextureImage", u"/x/Stein.png"),
               L(u"view:Part.TextureImage", u"/x/Holz.png")}));
}

TEST_F(FreecadReader, PropertiesOfTheDocumentItselfHaveIdsWithoutAnObject)
{
    const QByteArray xml = "<Document><Properties Count=\"1\">" +
                           Property("Base", "XLink", XLink("a.FCStd")) + "</Properties></Document>";
    EXPECT_EQ(LinksOf(xml), (Links{L(u".Base", u"a.FCStd")}));
}

TEST_F(FreecadReader, PathsAreDecoded)
{
    EXPECT_EQ(LinksOf(Document(Property(
                  "A", "XLink", XLink("../Tr&#xE4;ger &amp; &lt;Ma&quot;&apos;ß&gt;/木.FCStd")))),
              (Links{L(u"Part.A", u"../Träger & <Ma\"'ß>/木.FCStd")}));
}

TEST_F(FreecadReader, ReadingChangesNeitherBytesNorTimes)
{
    const QDateTime time = QDateTime::fromSecsSinceEpoch(1'000'000'000);
    tree.File(m_file, Packed(Document(Property("A", "XLink", XLink("a.FCStd")))))
        .Touch(m_file, time);
    const FileTree::Snapshot before = tree.Contents();
    Read(m_file);
    EXPECT_EQ(tree.Contents(), before);
    EXPECT_EQ(tree.Modified(m_file), time);
}

TEST_F(FreecadReader, TensOfThousandsOfLinksAreAllRead)
{
    QByteArray list;
    for (int i = 0; i < 50'000; ++i)
        list += XLink("a" + QByteArray::number(i) + ".FCStd");
    const Links links = LinksOf(Document(
        Property("A", "XLinkList", "<XLinkSubList count=\"50000\">" + list + "</XLinkSubList>")));
    ASSERT_EQ(links.size(), 50'000);
    EXPECT_EQ(links.last(), L(u"Part.A#50000", u"a49999.FCStd"));
}

} // namespace Halvern::Test
