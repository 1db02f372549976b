// SPDX-License-Identifier: Apache-2.0

#include "MeshesFixture.h"

#include <random>

namespace Halvern::Test {

namespace {

class DamagedMeshes : public MeshesFixture
{
protected:
    struct Good
    {
        const char16_t* name;
        QByteArray content;
        QString id;
    };
    static QList<Good> GoodFiles()
    {
        return {{u"a.3ds", ThreeDs(Material("Oak", 0xA200, "a.png")), u"Oak/texture"_s},
                {u"a.lwo", LightWave("LWO2", Clip(1, Part("STIL", Name("a.png"), 2))),
                 u"clip 1/STIL"_s},
                {u"b.lwo",
                 LightWave("LWOB", Part("SURF", Name("Oak") + Part("TIMG", Name("a.png"), 2), 4)),
                 u"Oak/surface/TIMG"_s},
                {u"a.x", "xof 0303txt 0032\nTextureFilename { \"a.png\"; }", u"texture"_s},
                {u"b.x", "xof 0303bin 0032" + BinaryTexture("a.png"), u"texture"_s},
                {u"a.ply", "ply\ncomment TextureFile a.png\nend_header\n", u"TextureFile"_s}};
    }
};

} // namespace

TEST_F(DamagedMeshes, WhatIsWrongIsReportedWithItsPlace)
{
    const QByteArray longName(300, 'x');
    const struct
    {
        const char* what;
        const char16_t* name;
        QByteArray content;
        std::string message;
    } rows[] = {
        {"nothing", u"a.3ds", "", "the file ends too early (byte 0)"},
        {"another file", u"a.3ds", Chunk(0x1234, "abc"),
         "a 3DS file begins with its main chunk (byte 0)"},
        {"a main chunk that is too long", u"a.3ds", ThreeDs({}).chopped(1),
         "a chunk of 32 bytes where 31 are left (byte 0)"},
        {"a chunk that is too long", u"a.3ds",
         Chunk(0x4D4D, Number(0x3D3D, 2, false) + Number(7, 4, false)),
         "a chunk of 7 bytes where 6 are left (byte 6)"},
        {"a chunk that is too short", u"a.3ds",
         Chunk(0x4D4D, Number(0x3D3D, 2, false) + Number(0, 4, false)),
         "a chunk of 0 bytes where 6 are left (byte 6)"},
        {"a name without an end", u"a.3ds", ThreeDs(Chunk(0x1100, "abc")),
         "a name without an end (byte 28)"},
        {"a long name", u"a.3ds", ThreeDs(Chunk(0x1100, Text(QByteArray(5000, 'a')))),
         "a name without an end (byte 28)"},
        {"a path that is too long", u"a.3ds", ThreeDs(Chunk(0x1100, Text(longName))),
         "the path of link background has 300 characters; a link can have 259"},
        {"nothing", u"a.lwo", "", "a LightWave object begins with \"FORM\" (byte 0)"},
        {"a new form", u"a.lwo", LightWave("LWO3", {}),
         "an object of the form LWO3, not LWOB, LWLO or LWO2 (byte 8)"},
        {"a form that is too long", u"a.lwo", LightWave("LWO2", "abcd").chopped(1),
         "the header gives a length of 8 bytes, the file has 7 (byte 4)"},
        {"a chunk that is too long", u"a.lwo", LightWave("LWO2", "CLIP" + Number(9, 4, true)),
         "a chunk of 9 bytes where 0 are left (byte 12)"},
        {"a clip without a number", u"a.lwo", LightWave("LWO2", Part("CLIP", "ab", 4)),
         "a clip without a number (byte 12)"},
        {"a part that is too long", u"a.lwo",
         LightWave("LWO2", Clip(1, "STIL" + Number(9, 2, true))),
         "a chunk of 9 bytes where 0 are left (byte 24)"},
        {"a name without an end", u"a.lwo", LightWave("LWO2", Clip(1, Part("STIL", "ab", 2))),
         "a name without an end (byte 30)"},
        {"a header that is cut off", u"a.x", "xof 0303txt 003",
         "the file ends unexpectedly (byte 15)"},
        {"a compressed file", u"a.x", "xof 0303tzip0032",
         "compressed files of this format are not read (byte 8)"},
        {"an unknown form", u"a.x", "xof 0303abc 0032", "neither text nor binary (byte 8)"},
        {"odd numbers", u"a.x", "xof 0303txt 0016", "numbers of neither 32 nor 64 bits (byte 12)"},
        {"a string without an end", u"a.x", "xof 0303txt 0032A { \"b",
         "a string without an end (byte 20)"},
        {"a huge string", u"a.x", "xof 0303txt 0032A { \"" + QByteArray(70'000, 'b'),
         "a string of more than 64 KiB (byte 20)"},
        {"an open bracket", u"a.x", "xof 0303txt 0032A {",
         "the file ends inside brackets (byte 19)"},
        {"a bracket too much", u"a.x", "xof 0303txt 0032}", "a bracket that closes none (byte 16)"},
        {"deep nesting", u"a.x", "xof 0303txt 0032" + QByteArray(5000, '{'),
         "nested deeper than 1000 levels (byte 1016)"},
        {"an unknown token", u"a.x", "xof 0303bin 0032" + Token(99),
         "an unknown token, 99 (byte 16)"},
        {"a list that is too long", u"a.x",
         "xof 0303bin 0032" + Token(7) + Number(0xFFFFFFFF, 4, false),
         "a part of 17179869184 bytes where 4 are left (byte 16)"},
        {"a string that is too long", u"a.x",
         "xof 0303bin 0032" + Token(2) + Number(5, 4, false) + "abcd",
         "a part of 9 bytes where 8 are left (byte 16)"},
        {"nothing", u"a.ply", "", "a PLY file begins with a line \"ply\" (byte 0)"},
        {"no end of the header", u"a.ply", "ply\nformat ascii 1.0\n",
         "the file ends inside its header (byte 21)"},
        {"a huge header", u"a.ply", "ply\n" + QByteArray("comment\n").repeated(200'000),
         "a header of more than 1 MiB (byte 1048576)"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(Failure(QString::fromUtf16(row.name), row.content), row.message) << row.what;
}

TEST_F(DamagedMeshes, AFileCutAnywhereIsReported)
{
    for (const Good& good : GoodFiles()) {
        const QString name = QString::fromUtf16(good.name);
        const qsizetype most = good.content.trimmed().size();
        for (qsizetype size = 0; size < most; ++size) {
            const QByteArray part = good.content.left(size);
            // A header alone is a file without anything, and so is a word after it; less than the
            // first word is something else.
            const bool isWhole = name.endsWith(u".x") &&
                                 (size < 4 || (name == u"a.x" ? size >= 16 && !part.contains('{')
                                                              : size == 16 || size == 37));
            tree.File(name, part);
            EXPECT_EQ(TryRead(name), isWhole) << name.toStdString() << ' ' << size;
        }
    }
}

TEST_F(DamagedMeshes, ChangedBytesNeverDoHarm)
{
    std::mt19937 random(15);
    for (const Good& good : GoodFiles()) {
        const QString name = QString::fromUtf16(good.name);
        int failures = 0;
        for (int round = 0; round < 200; ++round) {
            QByteArray content = good.content;
            for (unsigned changes = 1 + random() % 4; changes > 0; --changes)
                content[static_cast<qsizetype>(random() % static_cast<unsigned>(content.size()))] =
                    static_cast<char>(random() % 256);
            tree.File(name, content);
            const qsizetype lines = context.lines.size();
            const bool isRead = TryRead(name);
            EXPECT_EQ(context.lines.size() - lines, isRead ? 0 : 1);
            failures += isRead ? 0 : 1;
        }
        EXPECT_GT(failures, 0) << name.toStdString();
        EXPECT_LT(failures, 200) << name.toStdString();
    }
}

TEST_F(DamagedMeshes, ALinkThatIsNotThereIsNotRewritten)
{
    for (const Good& good : GoodFiles()) {
        const QString name = QString::fromUtf16(good.name);
        EXPECT_EQ(LinksOf(name, good.content), (Links{{good.id, u"a.png"_s}}));
        EXPECT_EQ(RewriteFailure(name, good.content, {L(u"x", u"y")}), u"the file has no link x"_s);
    }
}

TEST_F(DamagedMeshes, APartThatWouldBeLongerThanItCanBeIsNotWritten)
{
    const QByteArray rest = Part("STIL", Name("a.png") + QByteArray(65'000, 'x'), 2);
    tree.File(u"a.lwo"_s, LightWave("LWO2", Clip(1, rest)));
    const QString path(259, u'木');
    EXPECT_EQ(
        RewriteFailure(u"a.lwo"_s, LightWave("LWO2", Clip(1, rest)), {{u"clip 1/STIL"_s, path}})
            .toStdString(),
        "the new paths make a part of the file longer than it can be (byte 28)");
}

} // namespace Halvern::Test
