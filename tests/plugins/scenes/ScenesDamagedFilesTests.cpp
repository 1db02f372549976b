// SPDX-License-Identifier: Apache-2.0

#include "ScenesFixture.h"

#include <random>

namespace Halvern::Test {

namespace {

class DamagedScenes : public ScenesFixture
{
protected:
    struct Good
    {
        const char16_t* name;
        QByteArray content;
    };
    static QList<Good> GoodFiles()
    {
        return {{u"a.dae", Collada("<image id='w'><init_from>a.png</init_from></image><node>"
                                   "<instance_node url='b.dae#c'/></node>")},
                {u"a.x3d", X3d("<Inline DEF='I' url='\"a.x3d\" \"b.x3d\"'/>")},
                {u"a.wrl", Vrml("EXTERNPROTO P [ ] \"p.wrl\" DEF I Inline { url [ \"a.wrl\" ] }")},
                {u"b.wrl", OldVrml("Separator { WWWInline { name \"i.wrl\" } }")},
                {u"a.wrz", Packed(Vrml("Inline { url \"a.wrl\" }"))},
                {u"a.mtlx", MaterialX("<image name='a' fileprefix='x/'><input type='filename' "
                                      "value='a.png'/></image>")}};
    }
};

} // namespace

TEST_F(DamagedScenes, WhatIsWrongIsReportedWithItsPlace)
{
    const QByteArray longName(300, 'x');
    const struct
    {
        const char* what;
        const char16_t* name;
        QByteArray content;
        std::string message;
    } rows[] = {
        {"nothing", u"a.dae", "", "the document is not XML (byte 0)"},
        {"no XML", u"a.dae", "hello", "the document is not XML (byte 0)"},
        {"another document", u"a.dae", "<svg/>", "the root element is no COLLADA (byte 0)"},
        {"a document that is cut off", u"a.dae", "<COLLADA><image", "unclosed token (byte 9)"},
        {"tags that do not match", u"a.dae", "<COLLADA><a></COLLADA>", "mismatched tag (byte 14)"},
        {"deep nesting", u"a.dae", "<COLLADA>" + QByteArray("<a>").repeated(1'000'000),
         "nested deeper than 512 levels (byte 1542)"},
        {"a path that is too long", u"a.dae",
         Collada("<image id='i'><init_from>" + longName + "</init_from></image>"),
         "the path of link #i/init_from has 300 characters; a link can have 259"},
        {"a NUL", u"a.dae", Collada("<image id='i'><init_from>a%00</init_from></image>"),
         "the path of link #i/init_from holds a NUL character"},
        {"a long address", u"a.dae",
         Collada("<image><init_from>" + QByteArray(70'000, 'a') + "</init_from></image>"),
         "an address of more than 64 KiB (byte 136)"},
        {"a huge content", u"a.dae",
         Collada("<image><init_from>" + QByteArray(2'000'000, ' ') + "</init_from></image>"),
         "an address of more than 64 KiB (byte 136)"},
        {"another document", u"a.x3d", "<svg/>", "the root element is no X3D (byte 0)"},
        {"no scene", u"a.x3d", "Inline { }", "neither VRML nor X3D (byte 0)"},
        {"a huge list", u"a.x3d",
         X3d("<Inline url='" + QByteArray("\"a\" ").repeated(1'000'001) + "'/>"),
         "more than 1000000 links (byte 62)"},
        {"a list that is too large", u"a.x3d",
         X3d("<Inline url='\"data:" + QByteArray(17 << 20, 'x') + "\" \"a\"'/>"),
         "a list of addresses of more than 16 MiB (byte 62)"},
        {"nothing", u"a.wrl", "", "neither VRML nor X3D (byte 0)"},
        {"a binary file", u"a.wrl", QByteArray("\x89PNG\0\0", 6), "neither VRML nor X3D (byte 0)"},
        {"a string without an end", u"a.wrl", Vrml("Inline { url \"a\\\" }"),
         "a string without an end (byte 29)"},
        {"an open bracket", u"a.wrl", Vrml("Inline { url [ \"a\" }"),
         "a bracket that closes none (byte 35)"},
        {"a file that ends too early", u"a.wrl", Vrml("Inline { url [ \"a\" "),
         "the file ends inside brackets (byte 36)"},
        {"a bracket too much", u"a.wrl", Vrml("Inline { } }"),
         "a bracket that closes none (byte 27)"},
        {"deep nesting", u"a.wrl", Vrml(QByteArray("[").repeated(1'000'000)),
         "nested deeper than 100000 levels (byte 100016)"},
        {"damage in a compressed scene", u"a.wrz", Packed(Vrml("Inline { } }")),
         "a bracket that closes none at byte 27 of the unpacked text"},
        {"another document", u"a.mtlx", "<svg/>", "the root element is no materialx (byte 0)"},
        {"a long prefix", u"a.mtlx", "<materialx fileprefix='" + QByteArray(5000, 'x') + "'/>",
         "too much text before addresses (byte 23)"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(Failure(QString::fromUtf16(row.name), row.content), row.message) << row.what;
}

TEST_F(DamagedScenes, AFileCutAnywhereIsReported)
{
    for (const Good& good : GoodFiles()) {
        const QString name = QString::fromUtf16(good.name);
        const qsizetype most = good.content.trimmed().size();
        // A cut between two statements leaves a whole scene.
        for (qsizetype size = 0; size < most; ++size) {
            tree.File(name, good.content.left(size));
            if (!TryRead(name))
                continue;
            EXPECT_TRUE(name.endsWith(u".wrl"_s)) << name.toStdString() << ' ' << size;
            EXPECT_LT(good.content.left(size).count('{'), 1) << name.toStdString() << ' ' << size;
        }
    }
}

TEST_F(DamagedScenes, ChangedBytesNeverDoHarm)
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

TEST_F(DamagedScenes, ALinkThatIsNotThereIsNotRewritten)
{
    for (const Good& good : GoodFiles())
        EXPECT_EQ(RewriteFailure(QString::fromUtf16(good.name), good.content, {L(u"x", u"y")}),
                  u"the file has no link x"_s);
}

} // namespace Halvern::Test
