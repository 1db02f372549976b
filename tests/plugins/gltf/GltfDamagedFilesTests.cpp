// SPDX-License-Identifier: Apache-2.0

#include "FormatFixture.h"

#include "gltf/GltfResolver.h"

#include <QtCore/QFile>

namespace Halvern::Test {

using namespace Qt::StringLiterals;

namespace {

class DamagedGltf : public ResolverFixture
{
protected:
    DamagedGltf() : ResolverFixture(m_resolver) {}

    std::string Plain(const QByteArray& content)
    {
        return ReadFailure(u"a.gltf"_s, content).toStdString();
    }
    std::string Binary(const QByteArray& content)
    {
        return ReadFailure(u"a.glb"_s, content).toStdString();
    }

private:
    Formats::Gltf::GltfResolver m_resolver;
};

struct Row
{
    const char* what;
    QByteArray content;
    const char* message;
};

const QByteArray Binary8 = BinChunk("12345678");

QByteArray With(QByteArray bytes, qsizetype at, const QByteArray& part)
{
    return bytes.replace(at, part.size(), part);
}

/// A binary file of these bytes after the header, whose length is right.
QByteArray Headed(const QByteArray& body)
{
    return "glTF" + LittleEndian(2) + LittleEndian(static_cast<quint32>(12 + body.size())) + body;
}

} // namespace

TEST_F(DamagedGltf, MalformedJsonIsReportedWithItsPlace)
{
    const Row rows[] = {
        {"nothing", "", "The document is empty. (byte 0)"},
        {"blanks only", " \n", "The document is empty. (byte 2)"},
        {"an array", "[{\"uri\": \"a\"}]", "the document is no JSON object (byte 0)"},
        {"a string", "\"uri\"", "the document is no JSON object (byte 5)"},
        {"a number", "7", "the document is no JSON object (byte 1)"},
        {"cut off in an object", "{\"a\": 1",
         "Missing a comma or '}' after an object member. (byte 7)"},
        {"cut off in a string", "{\"a\": \"xyz",
         "Missing a closing quotation mark in string. (byte 10)"},
        {"cut off after a key", "{\"a\"",
         "Missing a colon after a name of object member. (byte 4)"},
        {"cut off after a colon", "{\"a\":", "Invalid value. (byte 5)"},
        {"cut off in a literal", "{\"a\": tr", "Invalid value. (byte 8)"},
        {"cut off in an escape", "{\"a\": \"\\u00",
         "Incorrect hex digit after \\u escape in string. (byte 7)"},
        {"a comma too many in an object", "{\"a\": 1,}",
         "Missing a name for object member. (byte 8)"},
        {"a comma too many in an array", "{\"a\": [1,]}", "Invalid value. (byte 9)"},
        {"a comma missing", "{\"a\": 1 \"b\": 2}",
         "Missing a comma or '}' after an object member. (byte 8)"},
        {"a colon missing", "{\"a\" 1}", "Missing a colon after a name of object member. (byte 5)"},
        {"a key without quotes", "{a: 1}", "Missing a name for object member. (byte 1)"},
        {"single quotes", "{'a': 1}", "Missing a name for object member. (byte 1)"},
        {"a comment", "{/* x */ \"a\": 1}", "Missing a name for object member. (byte 1)"},
        {"brackets that do not match", "{\"a\": [1}}",
         "Missing a comma or ']' after an array element. (byte 8)"},
        {"a bracket too many", "{\"a\": 1}}",
         "The document root must not be followed by other values. (byte 8)"},
        {"two documents", "{} {}",
         "The document root must not be followed by other values. (byte 3)"},
        {"a leading zero", "{\"a\": 01}",
         "Missing a comma or '}' after an object member. (byte 7)"},
        {"a plus sign", "{\"a\": +1}", "Invalid value. (byte 6)"},
        {"a dot without digits", "{\"a\": 1.}", "Miss fraction part in number. (byte 8)"},
        {"an exponent without digits", "{\"a\": 1e}", "Miss exponent in number. (byte 8)"},
        {"not a number", "{\"a\": NaN}", "Invalid value. (byte 6)"},
        {"a line break in a string", "{\"a\": \"x\ny\"}",
         "Invalid escape character in string. (byte 8)"},
        {"an unknown escape", "{\"a\": \"\\x41\"}", "Invalid escape character in string. (byte 7)"},
        {"an escape of no digits", "{\"a\": \"\\u00zz\"}",
         "Incorrect hex digit after \\u escape in string. (byte 7)"},
        {"half a surrogate pair", "{\"a\": \"\\ud83c x\"}",
         "The surrogate pair in string is invalid. (byte 7)"},
        {"the second half alone, in a uri", "{\"uri\": \"\\udf32.png\"}",
         "the path of link /uri is no valid text"},
        {"a byte that is no UTF-8", "{\"a\": \"x\xFFy\"}", "Invalid encoding in string. (byte 8)"},
        {"an overlong form", "{\"a\": \"\xC0\xAF\"}", "Invalid encoding in string. (byte 7)"},
        {"an encoded surrogate", "{\"a\": \"\xED\xA0\x80\"}",
         "Invalid encoding in string. (byte 7)"},
        {"Latin-1 in a key", "{\"H\xF6he\": 1}", "Invalid encoding in string. (byte 3)"},
        {"bytes that are no UTF-8 outside of strings", "{\"a\": 1 \xC3\xA4}",
         "Missing a comma or '}' after an object member. (byte 8)"},
        {"UTF-16", QByteArray("\xFF\xFE{\0}\0", 6), "Invalid value. (byte 0)"},
        {"a NUL in a string", QByteArray("{\"a\": \"x\0y\"}", 12),
         "Missing a closing quotation mark in string. (byte 8)"},
        {"a NUL after the document", QByteArray("{}\0", 3),
         "a NUL byte follows the document (byte 2)"},
        {"a document after a NUL", QByteArray("{}\0{}", 5),
         "a NUL byte follows the document (byte 2)"},
        {"a mark and nothing else", "\xEF\xBB\xBF", "The document is empty. (byte 3)"},
        {"a fault after a mark", "\xEF\xBB\xBF{\"a\" 1}",
         "Missing a colon after a name of object member. (byte 8)"},
    };
    for (const Row& row : rows)
        EXPECT_EQ(Plain(row.content), row.message) << row.what;
}

TEST_F(DamagedGltf, NestingIsBounded)
{
    const auto nested = [](int levels) {
        return "{\"a\":" + QByteArray(levels - 1, '[') + QByteArray(levels - 1, ']') + "}";
    };
    tree.File(u"a.gltf"_s, nested(512));
    EXPECT_TRUE(TryRead(u"a.gltf"_s));
    EXPECT_EQ(Plain(nested(513)), "nested deeper than 512 levels (byte 516)");
    EXPECT_EQ(Plain("{\"a\":" + QByteArray(10'000'000, '[')),
              "nested deeper than 512 levels (byte 516)");
    QByteArray objects;
    for (int i = 0; i < 100'000; ++i)
        objects += "{\"a\":";
    EXPECT_EQ(Plain(objects), "nested deeper than 512 levels (byte 2560)");
}

TEST_F(DamagedGltf, AUriThatNoLinkCanHoldIsReportedByName)
{
    const Row rows[] = {
        {"an escaped NUL", "{\"images\": [{\"uri\": \"a\\u0000b.png\"}]}",
         "the path of link /images/0/uri holds a NUL character"},
        {"a percent-encoded NUL", "{\"uri\": \"a%00b.png\"}",
         "the path of link /uri holds a NUL character"},
        {"10,000 characters",
         "{\"images\": [{\"uri\": \"a.png\"}, {\"uri\": \"" + QByteArray(10'000, 'x') + "\"}]}",
         "the path of link /images/1/uri has 10000 characters; a link can have 259"},
        {"260 letters beyond ASCII, encoded",
         "{\"uri\": \"" + QByteArray("%C3%B6").repeated(260) + "\"}",
         "the path of link /uri has 260 characters; a link can have 259"},
    };
    for (const Row& row : rows)
        EXPECT_EQ(Plain(row.content), row.message) << row.what;
}

TEST_F(DamagedGltf, AUriBelowAVeryLongKeyIsReportedByName)
{
    const QByteArray key(300, 'k');
    EXPECT_EQ(
        Plain("{\"" + key + "\": {\"uri\": \"a.png\"}}"),
        ("the id of link /" + key + "/uri has 305 characters; a link can have 259").toStdString());
}

TEST_F(DamagedGltf, AUriOfExactlyTheLongestLengthIsALink)
{
    tree.File(u"a.gltf"_s, "{\"uri\": \"" + QByteArray("%C3%B6").repeated(259) + "\"}");
    EXPECT_EQ(Read(u"a.gltf"_s), (Links{{u"/uri"_s, QString(259, QChar(0xF6))}}));
}

TEST_F(DamagedGltf, ABinaryFileWithALyingHeaderIsReportedWithThePlace)
{
    const QByteArray good = Glb(R"({"uri":"a"})", Binary8); // JSON of 12 bytes at 20, BIN at 32
    ASSERT_EQ(good.size(), 48);
    const Row rows[] = {
        {"another magic", With(good, 0, "gLTF"),
         "a binary glTF file begins with \"glTF\" (byte 0)"},
        {"version 1", With(good, 4, LittleEndian(1)),
         "the content has the format 1313821514, not JSON (byte 16)"},
        {"version 3", With(good, 4, LittleEndian(3)),
         "version 3 of the container, not 1 or 2 (byte 4)"},
        {"a length beyond the file", With(good, 8, LittleEndian(0xFFFFFFFF)),
         "the header gives a length of 4294967295 bytes, the file has 48 (byte 8)"},
        {"a length short of the file", With(good, 8, LittleEndian(32)),
         "the header gives a length of 32 bytes, the file has 48 (byte 8)"},
        {"a length of nothing", With(good, 8, LittleEndian(0)),
         "the header gives a length of 0 bytes, the file has 48 (byte 8)"},
        {"something after the end", good + "more",
         "the header gives a length of 48 bytes, the file has 52 (byte 8)"},
        {"a JSON chunk beyond the file", With(good, 12, LittleEndian(32)),
         "a chunk of 32 bytes where 28 are left (byte 12)"},
        {"a JSON chunk of nearly 4 GiB", With(good, 12, LittleEndian(0xFFFFFFFC)),
         "a chunk of 4294967292 bytes where 28 are left (byte 12)"},
        {"a JSON chunk of odd size", With(good, 12, LittleEndian(11)),
         "a chunk of 11 bytes, which is no multiple of 4 (byte 12)"},
        {"a JSON chunk that ends early", With(good, 12, LittleEndian(8)),
         "a chunk of 545071713 bytes where 12 are left (byte 28)"},
        {"an empty JSON chunk", Headed(GlbChunk("JSON", "") + Binary8),
         "The document is empty. (byte 20)"},
        {"another first chunk", With(good, 16, "BIN"), "the first chunk is not JSON (byte 16)"},
        {"a second JSON chunk", With(good, 36, "JSON"), "a second JSON chunk (byte 36)"},
        {"a following chunk beyond the file", With(good, 32, LittleEndian(12)),
         "a chunk of 12 bytes where 8 are left (byte 32)"},
        {"a following chunk of odd size", With(good, 32, LittleEndian(7)),
         "a chunk of 7 bytes, which is no multiple of 4 (byte 32)"},
        {"a following chunk that ends early", With(good, 32, LittleEndian(4)),
         "the file ends inside a chunk header (byte 48)"},
        {"nothing but empty chunks",
         Headed(GlbChunk("JSON", "{}  ") + GlbChunk("XYZ1", "").repeated(4096)),
         "more than 4096 chunks (byte 32784)"},
        {"malformed JSON", Glb(R"({"uri":"a",})"), "Missing a name for object member. (byte 31)"},
        {"JSON padded with NUL", Headed(GlbChunk("JSON", QByteArray("{} \0", 4))),
         "a NUL byte follows the document (byte 23)"},
    };
    for (const Row& row : rows)
        EXPECT_EQ(Binary(row.content), row.message) << row.what;
}

TEST_F(DamagedGltf, ABinaryFileCutAnywhereIsReported)
{
    const QByteArray good = Glb(R"({"uri":"a"})", Binary8);
    for (qsizetype size = 0; size < good.size(); ++size) {
        const QByteArray length = QByteArray::number(size);
        const QByteArray expected =
            size < 12
                ? "the file ends inside its header (byte " + length + ")"
                : "the header gives a length of 48 bytes, the file has " + length + " (byte 8)";
        EXPECT_EQ(Binary(good.left(size)), expected.toStdString()) << size;
    }
}

TEST_F(DamagedGltf, ABinaryFileCutAnywhereWithALengthToMatchIsReported)
{
    const QByteArray good = Glb(R"({"uri":"a"})", Binary8);
    for (qsizetype size = 12; size < good.size(); ++size) {
        const QByteArray length = QByteArray::number(size);
        QByteArray expected = "the file ends inside a chunk header (byte " + length + ")";
        if (size >= 20 && size < 32)
            expected = "a chunk of 12 bytes where " + QByteArray::number(size - 20) +
                       " are left (byte 12)";
        else if (size >= 40)
            expected =
                "a chunk of 8 bytes where " + QByteArray::number(size - 40) + " are left (byte 32)";
        if (size == 32) // there it ends between two chunks and is whole
            continue;
        EXPECT_EQ(Binary(Headed(good.mid(12, size - 12))), expected.toStdString()) << size;
    }
    tree.File(u"a.glb"_s, Headed(good.mid(12, 20)));
    EXPECT_EQ(Read(u"a.glb"_s), (Links{{u"/uri"_s, u"a"_s}}));
}

TEST_F(DamagedGltf, NoSingleByteOfAHeaderTurnedOverCrashesOrChangesTheFile)
{
    const QByteArray good = Glb(R"({"uri":"a"})", Binary8);
    for (qsizetype at = 0; at < good.size(); ++at) {
        for (int bit = 0; bit < 8; ++bit) {
            QByteArray bad = good;
            bad[at] = static_cast<char>(bad.at(at) ^ (1 << bit));
            tree.File(u"a.glb"_s, bad);
            const bool ok = TryRead(u"a.glb"_s);
            EXPECT_TRUE(!ok || at >= 16) << at; // header and lengths are checked whole
            EXPECT_EQ(tree.Read(u"a.glb"_s), bad);
        }
    }
}

TEST_F(DamagedGltf, AFileThatIsMissingOrAFolderIsReported)
{
    EXPECT_FALSE(TryRead(u"none.gltf"_s));
    ASSERT_EQ(context.lines.size(), 1);
    EXPECT_TRUE(context.lines.first().startsWith(
        u"ERROR Failed to read the file links of %1: the file cannot be opened: "_s.arg(
            tree.Path(u"none.gltf"_s))));
    tree.Folder(u"folder.gltf"_s);
    EXPECT_FALSE(TryRead(u"folder.gltf"_s));
}

TEST_F(DamagedGltf, ADocumentBeyondTheLimitIsRefusedBeforeItIsRead)
{
    const QString name = u"a.gltf"_s;
    tree.File(name, "{}");
    ASSERT_TRUE(QFile::resize(tree.Path(name), (qint64(1) << 30) + 1));
    EXPECT_FALSE(TryRead(name));
    EXPECT_EQ(context.lines,
              QStringList{u"ERROR Failed to read the file links of %1: the document is "
                          "larger than 1 GiB"_s.arg(tree.Path(name))});
}

} // namespace Halvern::Test
