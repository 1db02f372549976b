// SPDX-License-Identifier: Apache-2.0

// glTF 1.0: objects by name where version 2 has lists, shaders, and another binary container.

#include "FormatFixture.h"

#include "gltf/GltfResolver.h"

namespace Halvern::Test {

using namespace Qt::StringLiterals;

namespace {

class GltfVersion1 : public ResolverFixture
{
protected:
    GltfVersion1() : ResolverFixture(m_resolver) {}

    const QString plain = u"a.gltf"_s;
    const QString binary = u"a.glb"_s;

private:
    Formats::Gltf::GltfResolver m_resolver;
};

const QByteArray Scene = R"({"asset": {"version": "1.0"},
  "buffers": {"geometry": {"byteLength": 4, "type": "arraybuffer", "uri": "duck 1.bin"}},
  "images": {"file2": {"name": "a/b", "uri": "../tex/H%C3%B6he.png"},
             "packed": {"uri": "data:,", "extensions": {"KHR_binary_glTF":
                        {"bufferView": "v", "mimeType": "image/png"}}}},
  "shaders": {"fs/0": {"type": 35632, "uri": "duck0FS.glsl"},
              "in": {"type": 35633, "uri": "data:text/plain,x"}},
  "techniques": {"t": {"program": "p", "uniforms": {"u": "uri"}}}})";

/// A container of version 1: the JSON as it is, then plain bytes.
QByteArray OldGlb(const QByteArray& json, const QByteArray& rest = {})
{
    return "glTF" + LittleEndian(1) +
           LittleEndian(static_cast<quint32>(20 + json.size() + rest.size())) +
           LittleEndian(static_cast<quint32>(json.size())) + LittleEndian(0) + json + rest;
}

QByteArray With(QByteArray bytes, qsizetype at, const QByteArray& part)
{
    return bytes.replace(at, part.size(), part);
}

} // namespace

TEST_F(GltfVersion1, BuffersImagesAndShadersAreLinksByTheirNames)
{
    const Links links{{u"/buffers/geometry/uri"_s, u"duck 1.bin"_s},
                      {u"/images/file2/uri"_s, u"../tex/Höhe.png"_s},
                      {u"/shaders/fs~10/uri"_s, u"duck0FS.glsl"_s}};
    tree.File(plain, Scene).File(binary, OldGlb(Scene, "rest"));
    EXPECT_EQ(Read(plain), links);
    EXPECT_EQ(Read(binary), links);
}

TEST_F(GltfVersion1, RewritingChangesTheStringsAlone)
{
    const Links links{{u"/shaders/fs~10/uri"_s, u"sh/é.glsl"_s},
                      {u"/buffers/geometry/uri"_s, u"b.bin"_s}};
    QByteArray expected = Scene;
    expected.replace("duck 1.bin", "b.bin").replace("duck0FS.glsl", "sh/%C3%A9.glsl");
    EXPECT_EQ(Rewritten(plain, Scene, links), expected);
}

TEST_F(GltfVersion1, ABinaryFileKeepsWhatFollowsTheJsonOnAMultipleOfFourBytes)
{
    const QByteArray rest = PatternBytes(100'001);
    for (const char16_t* path : {u"b", u"bc", u"bcd", u"bcde", u"../else/b.png"}) {
        const QByteArray json = R"({"uri":")" + QString::fromUtf16(path).toUtf8() + R"("})";
        const QByteArray padded = json.leftJustified((json.size() + 3) / 4 * 4, ' ');
        EXPECT_TRUE(Rewritten(binary, OldGlb(R"({"uri":"a.png"} )", rest),
                              {{u"/uri"_s, QString::fromUtf16(path)}}) == OldGlb(padded, rest))
            << json.toStdString();
        EXPECT_EQ(Read(binary), (Links{{u"/uri"_s, QString::fromUtf16(path)}}));
    }
}

TEST_F(GltfVersion1, ABinaryFileWithALyingHeaderIsReportedWithThePlace)
{
    const QByteArray good = OldGlb(R"({"uri":"a"}  )", "12345");
    const std::pair<QByteArray, const char16_t*> rows[] = {
        {With(good, 8, LittleEndian(100)),
         u"the header gives a length of 100 bytes, the file has 38 (byte 8)"},
        {With(good, 12, LittleEndian(19)), u"a content of 19 bytes where 18 are left (byte 12)"},
        {With(good, 12, LittleEndian(0xFFFFFFFF)),
         u"a content of 4294967295 bytes where 18 are left (byte 12)"},
        {With(good, 16, LittleEndian(1)), u"the content has the format 1, not JSON (byte 16)"},
        {With(good, 12, LittleEndian(0)), u"The document is empty. (byte 20)"},
        {With(good, 12, LittleEndian(14)),
         u"The document root must not be followed by other values. (byte 33)"},
    };
    for (const auto& [content, message] : rows)
        EXPECT_EQ(ReadFailure(binary, content), QString::fromUtf16(message));
}

TEST_F(GltfVersion1, ABinaryFileCutAnywhereIsReported)
{
    const QByteArray good = OldGlb(R"({"uri":"a"})");
    for (qsizetype size = 0; size < good.size(); ++size) {
        EXPECT_NE(ReadFailure(binary, good.left(size)), QString()) << size;
        if (size < 12)
            continue;
        EXPECT_NE(
            ReadFailure(binary, With(good.left(size), 8, LittleEndian(static_cast<quint32>(size)))),
            QString())
            << size;
    }
}

TEST_F(GltfVersion1, AColonAloneIsNoAddress)
{
    tree.File(plain, R"({"images": [{"uri": ":"}, {"uri": "a.png"}]})");
    EXPECT_EQ(Read(plain), (Links{{u"/images/1/uri"_s, u"a.png"_s}}));
    EXPECT_EQ(Rewritten(plain, R"({"a": {"uri": ":"}, "b": {"uri": "a.png"}})",
                        {{u"/b/uri"_s, u"b.png"_s}}),
              R"({"a": {"uri": ":"}, "b": {"uri": "b.png"}})");
    EXPECT_EQ(RewriteFailure(plain, R"({"uri": ":"})", {{u"/uri"_s, u"b.png"_s}}),
              u"the file has no link /uri"_s);
}

} // namespace Halvern::Test
