// SPDX-License-Identifier: Apache-2.0

#include "FormatFixture.h"

#include "gltf/GltfResolver.h"
#include "pluginkit/ReplacementFile.h"

#include <QtCore/QFileInfo>

namespace Halvern::Test {

using namespace Qt::StringLiterals;

namespace {

class GltfRewriter : public ResolverFixture
{
protected:
    GltfRewriter() : ResolverFixture(m_resolver) {}

    /// The document after its links got new paths.
    QByteArray Rewritten(const QByteArray& json, const Links& links)
    {
        tree.File(m_file, json);
        EXPECT_TRUE(Repath(m_file, links)) << context.lines.join(u'\n').toStdString();
        return tree.Read(m_file);
    }
    /// What a rewrite that must fail logs after "<file>: ".
    QString Failure(const QByteArray& json, const Links& links)
    {
        tree.File(m_file, json);
        context.lines.clear();
        EXPECT_FALSE(Repath(m_file, links));
        EXPECT_EQ(tree.Contents(), (FileTree::Snapshot{{m_file, json}}));
        const QString start = u"ERROR Failed to rewrite the file links of %1: "_s;
        const QString prefix = start.arg(tree.Path(m_file));
        return context.lines.join(u'\n').replace(prefix, QString());
    }

    const QString m_file = u"a.gltf"_s;
    Formats::Gltf::GltfResolver m_resolver;
};

Link L(const char16_t* id, const char16_t* path)
{
    return {QString::fromUtf16(id), QString::fromUtf16(path)};
}

} // namespace

TEST_F(GltfRewriter, OnlyTheBytesOfTheStringsChange)
{
    const QByteArray before =
        "\xEF\xBB\xBF{ \"asset\":{\"version\":\"2.0\"},\r\n\t\"images\" : [ {\"uri\" \t:\n "
        "\"t/a.png\" , "
        "\"name\":\"\\u00e4\"},{\"uri\":\"t\\/b.png\"} ],\"extras\":{\"uri\":\"t/a.png\"}, "
        "\"n\":1.50e+0 }\r\n\r\n";
    QByteArray after = before;
    after.replace("\n \"t/a.png\"", "\n \"../x/H%C3%B6he%201.png\"");
    EXPECT_EQ(Rewritten(before, {L(u"/images/0/uri", u"../x/Höhe 1.png")}), after);
}

TEST_F(GltfRewriter, OfTwoLinksWithEqualPathsTheOneThatIsNamedChanges)
{
    EXPECT_EQ(Rewritten(R"({"images":[{"uri":"a.png"},{"uri":"a.png"}]})",
                        {L(u"/images/1/uri", u"b.png")}),
              R"({"images":[{"uri":"a.png"},{"uri":"b.png"}]})");
}

TEST_F(GltfRewriter, RepeatedKeysAreRewrittenByTheirIds)
{
    EXPECT_EQ(Rewritten(R"({"uri":"a.png","uri":"b.png"})",
                        {L(u"/uri#2", u"y.png"), L(u"/uri", u"x.png")}),
              R"({"uri":"x.png","uri":"y.png"})");
}

TEST_F(GltfRewriter, TheSchemaOfAnExtensionIsRewritten)
{
    EXPECT_EQ(Rewritten(R"({"extensions":{"X":{"schemaUri":"../a.json","uri":"b"}}})",
                        {L(u"/extensions/X/schemaUri", u"a b.json")}),
              R"({"extensions":{"X":{"schemaUri":"a%20b.json","uri":"b"}}})");
}

TEST_F(GltfRewriter, AStringThatNamesThePathAlreadyKeepsItsBytes)
{
    EXPECT_EQ(Rewritten(R"({"a":{"uri":"\u0048\u00f6he.png"},"b":{"uri":"H%c3%B6he.png"},)"
                        R"("c":{"uri":"./H\/e.png"},"d":{"uri":"old.png"}})",
                        {L(u"/a/uri", u"Höhe.png"), L(u"/b/uri", u"Höhe.png"),
                         L(u"/c/uri", u"H/e.png"), L(u"/d/uri", u"new.png")}),
              R"({"a":{"uri":"\u0048\u00f6he.png"},"b":{"uri":"H%c3%B6he.png"},)"
              R"("c":{"uri":"./H\/e.png"},"d":{"uri":"new.png"}})");
}

TEST_F(GltfRewriter, WhereNothingChangesTheFileIsNotWritten)
{
    const QDateTime time = QDateTime::fromSecsSinceEpoch(1'000'000'000);
    tree.File(m_file, R"({"uri":"a%20b.png"})").Touch(m_file, time);
    EXPECT_TRUE(Repath(m_file, {L(u"/uri", u"a b.png")}));
    EXPECT_EQ(tree.Modified(m_file), time);
    EXPECT_TRUE(Repath(m_file, {}));
    EXPECT_EQ(tree.Modified(m_file), time);
    EXPECT_TRUE(context.lines.isEmpty());
}

TEST_F(GltfRewriter, AnAbsolutePathBecomesAFileUri)
{
    EXPECT_EQ(Rewritten(R"({"uri":"a.png"})", {L(u"/uri", u"D:/x y/a.png")}),
              R"({"uri":"file:///D:/x%20y/a.png"})");
    EXPECT_EQ(Rewritten(R"({"uri":"a.png"})", {L(u"/uri", u"/lib/a.png")}),
              R"({"uri":"file:///lib/a.png"})");
    EXPECT_EQ(Rewritten(R"({"uri":"a.png"})", {L(u"/uri", u"12:30.png")}),
              R"({"uri":"./12:30.png"})");
}

TEST_F(GltfRewriter, ASecondRewriteDoesNothing)
{
    const Links links = {L(u"/a/uri", u"../Höhe & Maß/50% #1?.png"), L(u"/b/uri", u"D:/x.bin")};
    const QByteArray once = Rewritten(R"({"a":{"uri":"1"},"b":{"uri":"2"}})", links);
    EXPECT_EQ(Read(m_file), links);
    const QDateTime time = QDateTime::fromSecsSinceEpoch(1'000'000'000);
    tree.Touch(m_file, time);
    EXPECT_TRUE(Repath(m_file, links));
    EXPECT_EQ(tree.Read(m_file), once);
    EXPECT_EQ(tree.Modified(m_file), time);
}

TEST_F(GltfRewriter, AnIdThatIsNotInTheFileFailsByNameAndNothingIsWritten)
{
    const QByteArray json = R"({"images":[{"uri":"a.png"}],"extras":{"uri":"x"}})";
    EXPECT_EQ(Failure(json, {L(u"/images/0/uri", u"b.png"), L(u"/images/1/uri", u"c.png")}),
              u"the file has no link /images/1/uri"_s);
    EXPECT_EQ(Failure(json, {L(u"/extras/uri", u"c.png")}), u"the file has no link /extras/uri"_s);
    EXPECT_EQ(Failure(json, {L(u"", u"c.png")}), u"the file has no link "_s);
}

TEST_F(GltfRewriter, ANameThatWasNoFoldersBesideTheSourceIsFoundByItsId)
{
    tree.Folder(u"tex"_s);
    EXPECT_EQ(Rewritten(R"({"uri":"tex"})", {L(u"/uri", u"lib/tex")}), R"({"uri":"lib/tex"})");
}

TEST_F(GltfRewriter, ALinkThatCannotBeWrittenFailsByNameAndNothingIsWritten)
{
    const QByteArray json = R"({"uri":"a.png"})";
    EXPECT_EQ(Failure(json, {L(u"/uri", u"")}),
              u"the new path of link /uri is empty or no valid text"_s);
    EXPECT_EQ(Failure(json, {{u"/uri"_s, QString(QChar(0xD800))}}),
              u"the new path of link /uri is empty or no valid text"_s);
    EXPECT_EQ(Failure(json, {{QString(QChar(0xDC00)), u"x"_s}}), u"a link's id is no valid text"_s);
    EXPECT_EQ(Failure(json, {L(u"/uri", u"x"), L(u"/uri", u"y")}),
              u"two new paths for link /uri: x and y"_s);
}

TEST_F(GltfRewriter, ARecordOfAnotherSizeOrAnInvalidListIsRefused)
{
    tree.File(m_file, R"({"uri":"a.png"})");
    SyncPlugin::FileLinkInfo record = Record(L(u"/uri", u"b.png"));
    record.size = 1040;
    const QString path = tree.Path(m_file);
    const auto* file = Wide(path);
    EXPECT_FALSE(m_resolver.RepathFileLinks(file, &record, 1, &context));
    EXPECT_FALSE(m_resolver.RepathFileLinks(file, nullptr, 1, &context));
    EXPECT_FALSE(m_resolver.RepathFileLinks(file, &record, -1, &context));
    const QString start =
        u"ERROR Failed to rewrite the file links of %1: "_s.arg(tree.Path(m_file));
    EXPECT_EQ(context.lines, (QStringList{start + u"a link record of 1040 bytes"_s,
                                          start + u"the list of links is invalid"_s,
                                          start + u"the list of links is invalid"_s}));
}

TEST_F(GltfRewriter, AMalformedFileIsNotWritten)
{
    EXPECT_EQ(Failure(R"({"uri":"a.png",})", {L(u"/uri", u"b.png")}),
              u"Missing a name for object member. (byte 15)"_s);
}

TEST_F(GltfRewriter, AHundredThousandLinksAreRewrittenAtOnce)
{
    QByteArray before = "{\"images\":[";
    QByteArray after = before;
    Links links;
    for (int i = 0; i < 100'000; ++i) {
        const QByteArray number = QByteArray::number(i);
        before += (i ? ",{\"uri\":\"a" : "{\"uri\":\"a") + number + ".png\"}";
        after += (i ? ",{\"uri\":\"../b/" : "{\"uri\":\"../b/") + number + "%20x.png\"}";
        links.append({u"/images/%1/uri"_s.arg(i), u"../b/%1 x.png"_s.arg(i)});
    }
    EXPECT_TRUE(Rewritten(before + "]}", links) == after + "]}");
}

TEST_F(GltfRewriter, ABinaryFileKeepsItsOtherChunksAndGetsNewLengths)
{
    // Larger than two buffers of the copy, and not a multiple of one.
    const qint64 size = 2 * qint64(PluginKit::ReplacementFile::CopyBufferSize) + 4 * 1237;
    const QByteArray rest = BinChunk(PatternBytes(size)) + GlbChunk("XYZ1", PatternBytes(8, 2));
    const QString file = u"a.glb"_s;
    for (const char16_t* path : {u"b", u"bc", u"bcd", u"bcde", u"../somewhere/else/b.png"}) {
        tree.File(file, Glb(R"({"uri":"a.png"})", rest));
        EXPECT_TRUE(Repath(file, {L(u"/uri", path)}));
        const QByteArray json = R"({"uri":")" + QString::fromUtf16(path).toUtf8() + R"("})";
        EXPECT_TRUE(tree.Read(file) == Glb(json, rest)) << json.toStdString();
        EXPECT_EQ(Read(file), (Links{L(u"/uri", path)}));
    }
}

TEST_F(GltfRewriter, ABinaryFileComesBackByteForByteWhenItsLinkDoes)
{
    const QString file = u"a.glb"_s;
    const QByteArray before = Glb(R"({"uri":"a.png"} )", BinChunk("12345678"));
    tree.File(file, before);
    EXPECT_TRUE(Repath(file, {L(u"/uri", u"some/longer/name.png")}));
    EXPECT_NE(tree.Read(file), before);
    EXPECT_TRUE(Repath(file, {L(u"/uri", u"a.png")}));
    EXPECT_EQ(tree.Read(file), before);
}

TEST_F(GltfRewriter, ABinaryFileWithoutOtherChunksIsRewritten)
{
    const QString file = u"a.glb"_s;
    tree.File(file, Glb(R"({"uri":"a.png"})"));
    EXPECT_TRUE(Repath(file, {L(u"/uri", u"b c.png")}));
    EXPECT_EQ(tree.Read(file), Glb(R"({"uri":"b%20c.png"})"));
    EXPECT_EQ(tree.Contents().size(), 1);
}

} // namespace Halvern::Test
