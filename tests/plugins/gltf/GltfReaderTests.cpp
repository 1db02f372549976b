// SPDX-License-Identifier: Apache-2.0

#include "FormatFixture.h"

#include "gltf/GltfResolver.h"

#include <algorithm>

namespace Halvern::Test {

using namespace Qt::StringLiterals;

namespace {

class GltfReader : public ResolverFixture
{
protected:
    GltfReader() : ResolverFixture(m_resolver) {}

    Links ReadText(const QByteArray& json)
    {
        tree.File(u"a.gltf"_s, json);
        return Read(u"a.gltf"_s);
    }

private:
    Formats::Gltf::GltfResolver m_resolver;
};

Link L(const char16_t* id, const char16_t* path)
{
    return {QString::fromUtf16(id), QString::fromUtf16(path)};
}

} // namespace

TEST_F(GltfReader, BuffersAndImagesAreLinksInTheOrderOfTheText)
{
    EXPECT_EQ(ReadText(R"({"images": [{"uri": "t/a.png"}, {"name": "x", "uri": "t/a.png"}],
                           "buffers": [{"byteLength": 4, "uri": "geo.bin"}]})"),
              (Links{L(u"/images/0/uri", u"t/a.png"), L(u"/images/1/uri", u"t/a.png"),
                     L(u"/buffers/0/uri", u"geo.bin")}));
}

TEST_F(GltfReader, AnExtensionsUriIsALinkAndOneBelowExtrasIsNot)
{
    EXPECT_EQ(ReadText(R"({"extensions": {"X_lights": {"lights": [{"uri": "a.ies"}]}},
                           "extras": {"uri": "no", "deep": [{"uri": "no"}]},
                           "nodes": [{"extras": [{"uri": "no"}], "uri": "after-extras"}]})"),
              (Links{L(u"/extensions/X_lights/lights/0/uri", u"a.ies"),
                     L(u"/nodes/0/uri", u"after-extras")}));
}

TEST_F(GltfReader, TheSchemaOfAnExtensionIsALinkAndOneElsewhereIsNot)
{
    EXPECT_EQ(ReadText(R"({"extensions": {"EXT_structural_metadata": {"schemaUri": "a%20b.json"},
                           "EXT_feature_metadata": [{"schemaUri": "c.json"}],
                           "extras": {"schemaUri": "no"}, "extensions": {"schemaUri": {}}},
                           "schemaUri": "no", "asset": {"schemaUri": "no"},
                           "extras": {"extensions": {"X": {"schemaUri": "no"}}}})"),
              (Links{L(u"/extensions/EXT_structural_metadata/schemaUri", u"a b.json"),
                     L(u"/extensions/EXT_feature_metadata/0/schemaUri", u"c.json")}));
}

TEST_F(GltfReader, OnlyAStringUnderTheVeryKeyIsALink)
{
    EXPECT_EQ(ReadText(R"({"a": {"uri": 1}, "b": {"uri": null}, "c": {"uri": ["x.png"]},
                           "d": {"uri": {"uri": "y.png"}}, "e": {"URI": "z"}, "f": ["uri"],
                           "g": {"uris": "z"}, "name": "uri"})"),
              (Links{L(u"/d/uri/uri", u"y.png")}));
}

TEST_F(GltfReader, EmbeddedDataOtherSchemesAndEmptyTextsAreNoLinks)
{
    EXPECT_EQ(ReadText(R"({"images": [{"uri": "data:image/png;base64,AA=="}, {"uri": ""},
                           {"uri": "https://example.com/a.png"}, {"uri": "#a"}, {"uri": "b.png"}]})"),
              (Links{L(u"/images/4/uri", u"b.png")}));
}

TEST_F(GltfReader, EscapesOfJsonAndOfUrisAreTakenOff)
{
    EXPECT_EQ(ReadText(R"({"\u0075ri": "Ma\u00dfe%20\ud83c\udf32\/a.png",
                           "a/b~c": {"uri": "H%C3%B6he.png"}})"),
              (Links{L(u"/uri", u"Maße \U0001F332/a.png"), L(u"/a~1b~0c/uri", u"Höhe.png")}));
}

TEST_F(GltfReader, BackslashesOfProgramsForWindowsAreSlashes)
{
    EXPECT_EQ(ReadText(R"({"images": [{"uri": "..\\my%20textures\\a.png"}]})"),
              (Links{L(u"/images/0/uri", u"../my textures/a.png")}));
}

TEST_F(GltfReader, ANameThatIsAFolderIsNoLink)
{
    tree.Folder(u"tex"_s);
    EXPECT_EQ(ReadText(R"({"images": [{"uri": "tex"}, {"uri": "lost/"}, {"uri": "."}]})"), Links{});
}

TEST_F(GltfReader, AFileUriIsALinkWithAnAbsolutePath)
{
    EXPECT_EQ(ReadText(R"({"images": [{"uri": "file:///D:/lib/a%20b.png"}]})"),
              (Links{L(u"/images/0/uri", u"D:/lib/a b.png")}));
}

TEST_F(GltfReader, ANameThatTheExporterForgotToEncodeIsFoundOnTheDisk)
{
    tree.File(u"t/50%20oak.png"_s);
    EXPECT_EQ(ReadText(R"({"images": [{"uri": "t/50%20oak.png"}]})"),
              (Links{L(u"/images/0/uri", u"t/50%20oak.png")}));
}

TEST_F(GltfReader, AByteOrderMarkIsTolerated)
{
    EXPECT_EQ(ReadText("\xEF\xBB\xBF{\"uri\": \"a.png\"}"), (Links{L(u"/uri", u"a.png")}));
    tree.File(u"b.glb"_s, Glb("\xEF\xBB\xBF{\"uri\": \"a.png\"}"));
    EXPECT_EQ(Read(u"b.glb"_s), (Links{L(u"/uri", u"a.png")}));
}

TEST_F(GltfReader, RepeatedKeysGiveLinksThatIdsTellApart)
{
    EXPECT_EQ(ReadText(R"({"images": [{"uri": "a.png", "uri": "b.png"}],
                           "images": [{"uri": "c.png"}, {"uri": "d.png"}]})"),
              (Links{L(u"/images/0/uri", u"a.png"), L(u"/images/0/uri#2", u"b.png"),
                     L(u"/images/0/uri#3", u"c.png"), L(u"/images/1/uri", u"d.png")}));
}

TEST_F(GltfReader, NumbersOfAnySizeDoNotMatter)
{
    const QByteArray digits(200, '9');
    EXPECT_EQ(ReadText("{\"a\": [-0, 0.5e-7, 1E+9, 1e-99999, 18446744073709551616, " + digits +
                       "], \"uri\": \"a.png\"}"),
              (Links{L(u"/uri", u"a.png")}));
}

TEST_F(GltfReader, ADocumentWithoutLinksSucceedsWithNone)
{
    EXPECT_EQ(ReadText("{}"), Links());
    EXPECT_EQ(ReadText(" \r\n\t{ } \n"), Links());
    EXPECT_TRUE(context.lines.isEmpty());
}

TEST_F(GltfReader, ABinaryFileIsRecognisedByItsFirstBytesWhateverItsName)
{
    for (const QString& name : {u"a.glb"_s, u"A.GLB"_s, u"b.gltf"_s, u"c"_s}) {
        tree.File(name, Glb(R"({"images": [{"uri": "a.png"}]})", BinChunk("1234")));
        EXPECT_EQ(Read(name), (Links{L(u"/images/0/uri", u"a.png")})) << name.toStdString();
    }
}

TEST_F(GltfReader, ChunksOfUnknownKindsArePassedOver)
{
    tree.File(u"a.glb"_s,
              Glb(R"({"uri": "a.png"})", GlbChunk(QByteArray(4, '\0'), "") + BinChunk("12345678") +
                                             GlbChunk("XYZ1", "1234")));
    EXPECT_EQ(Read(u"a.glb"_s), (Links{L(u"/uri", u"a.png")}));
}

TEST_F(GltfReader, ReadingChangesNeitherBytesNorTimes)
{
    const QDateTime time = QDateTime::fromSecsSinceEpoch(1'000'000'000);
    tree.File(u"a.gltf"_s, R"({"uri": "a.png"})").Touch(u"a.gltf"_s, time);
    const FileTree::Snapshot before = tree.Contents();
    Read(u"a.gltf"_s);
    EXPECT_EQ(tree.Contents(), before);
    EXPECT_EQ(tree.Modified(u"a.gltf"_s), time);
}

TEST_F(GltfReader, AHundredThousandUrisAreAllRead)
{
    QByteArray json = "{\"images\": [";
    for (int i = 0; i < 100'000; ++i)
        json += (i ? ",{\"uri\":\"t/a" : "{\"uri\":\"t/a") + QByteArray::number(i) + ".png\"}";
    tree.File(u"a.gltf"_s, json + "]}");

    const auto links = Read(u"a.gltf"_s);

    EXPECT_EQ(links.size(), 100'000U);
    EXPECT_EQ(links.at(99'999), L(u"/images/99999/uri", u"t/a99999.png"));
}

} // namespace Halvern::Test
