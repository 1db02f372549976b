// SPDX-License-Identifier: Apache-2.0

// Objects and libraries of 16-bit text, as some programs for Windows write them.

#include "FormatFixture.h"

#include "pluginkit/FileScanner.h"
#include "wavefront/WavefrontResolver.h"

#include <QtCore/QStringEncoder>

namespace Halvern::Test {

using namespace Qt::StringLiterals;

namespace {

class WavefrontUtf16 : public ResolverFixture
{
protected:
    WavefrontUtf16() : ResolverFixture(m_resolver) {}

    const QString object = u"a.obj"_s;
    const QString library = u"lib.mtl"_s;

private:
    Formats::Wavefront::WavefrontResolver m_resolver;
};

constexpr QStringConverter::Encoding Forms[] = {QStringConverter::Utf16LE,
                                                QStringConverter::Utf16BE};

QByteArray Wide(const QString& text, QStringConverter::Encoding form)
{
    QStringEncoder encoder(form, QStringConverter::Flag::WriteBom);
    return encoder.encode(text);
}

} // namespace

TEST_F(WavefrontUtf16, NamesAreReadInEitherOrderOfBytes)
{
    for (const auto form : Forms) {
        tree.File(object,
                  Wide(u"# 木𝄞\r\nmtllib Höhe 𝄞.mtl\r\nv 0 0 0\r\nmtllib \\\r\nb.mtl"_s, form));
        EXPECT_EQ(Read(object),
                  (Links{{u"mtllib 1"_s, u"Höhe 𝄞.mtl"_s}, {u"mtllib 2"_s, u"b.mtl"_s}}));
        tree.File(library, Wide(u"newmtl Eiche ö\nmap_Kd -s 1 1 1 木.png\n"_s, form));
        EXPECT_EQ(Read(library), (Links{{u"Eiche ö/map_kd"_s, u"木.png"_s}}));
    }
}

TEST_F(WavefrontUtf16, OnlyTheBytesOfTheNamesChange)
{
    const QString before = u"# 木𝄞\r\nmtllib \"𝄞 a.mtl\"  \r\nv 0 0 0\nmtllib \\\nb.mtl\t"_s;
    QString after = before;
    after.replace(u"𝄞 a.mtl"_s, u"../Größe/木𝄞.mtl"_s).replace(u"b.mtl"_s, u"c.mtl"_s);
    for (const auto form : Forms)
        EXPECT_EQ(Rewritten(object, Wide(before, form),
                            {{u"mtllib 1"_s, u"../Größe/木𝄞.mtl"_s}, {u"mtllib 2"_s, u"c.mtl"_s}}),
                  Wide(after, form));
}

TEST_F(WavefrontUtf16, ALibraryByTheOldNameGetsAStatement)
{
    const Link companion{u"companion:mtl"_s, u"lib/ö.mtl"_s};
    for (const auto form : Forms) {
        EXPECT_EQ(Rewritten(object, Wide(u"v 0 0 0\r\n"_s, form), {companion}),
                  Wide(u"mtllib lib/ö.mtl\r\nv 0 0 0\r\n"_s, form));
        EXPECT_EQ(Rewritten(object, Wide(u"mtllib 𝄞.mtl\r\nv 0 0 0"_s, form), {companion}),
                  Wide(u"mtllib 𝄞.mtl\r\nmtllib lib/ö.mtl\r\nv 0 0 0"_s, form));
    }
}

TEST_F(WavefrontUtf16, AFileLargerThanABlockIsRead)
{
    QString text = u"x"_s;
    while (text.size() * 2 < qsizetype(2 * PluginKit::FileScanner::BlockSize))
        text += u"v 0.25 1 木\n"_s;
    for (const auto form : Forms) {
        tree.File(object, Wide(text + u"mtllib a.mtl\n"_s + text + u"\nmtllib b.mtl"_s, form));
        EXPECT_EQ(PathsOf(Read(object)), (QStringList{u"a.mtl"_s, u"b.mtl"_s}));
        const QByteArray changed =
            Wide(text + u"mtllib ccc.mtl\n"_s + text + u"\nmtllib b.mtl"_s, form);
        EXPECT_TRUE(Repath(object, {{u"mtllib 1"_s, u"ccc.mtl"_s}}));
        EXPECT_TRUE(tree.Read(object) == changed);
    }
}

TEST_F(WavefrontUtf16, AnIdThatIsNotThereLeavesTheFileAsItIs)
{
    EXPECT_EQ(
        RewriteFailure(object, Wide(u"mtllib a.mtl"_s, Forms[0]), {{u"mtllib 2"_s, u"b.mtl"_s}}),
        u"the file has no link mtllib 2"_s);
}

} // namespace Halvern::Test
