// SPDX-License-Identifier: Apache-2.0

#include "BlendFixture.h"

#include "blender/ZstdSeekTable.h"
#include "pluginkit/Compression.h"

#include <QtCore/QFile>

namespace Halvern::Test {

using namespace Qt::StringLiterals;

namespace {

QString PluginFile()
{
    return QStringLiteral(BLENDER_PLUGIN_FILE);
}

/// The built plug-in with files that Blender wrote, in the folders in which it wrote them.
class BlenderPlugin : private LoadedResolver, public ResolverFixture
{
protected:
    BlenderPlugin() : LoadedResolver(PluginFile()), ResolverFixture(Get())
    {
        Import(u"Haus 木.blend"_s, house);
        Import(u"Alter Garten.blend"_s, garden);
        Import(u"Möbel.blend"_s, furniture);
        for (int frame = 1; frame <= 4; ++frame)
            tree.File(u"Folge/Welle_000%1.png"_s.arg(frame));
        for (int frame = 1; frame <= 3; ++frame)
            tree.File(u"Nebel/Rauch_00%1.vdb"_s.arg(frame));
    }

    QByteArray Content(const QString& file) const
    {
        const PluginKit::InputFile input(std::filesystem::path(tree.Path(file).toStdU16String()));
        return QByteArray::fromStdString(PluginKit::ReadDecompressed(input, UINT64_MAX));
    }

    /// What a rewrite to another folder makes of a path wherever it stands, or once for one that
    /// Blender keeps a second time for itself.
    static void Move(QByteArray& content, const QByteArray& path)
    {
        const QByteArray to = "//../Wolke/" + path.mid(path.lastIndexOf('/') + 1);
        const qsizetype size = std::max(path.size(), to.size()) + 1;
        qsizetype at = content.indexOf(path + '\0');
        ASSERT_GT(at, 0) << path.toStdString();
        for (; at >= 0; at = path.startsWith("//") ? content.indexOf(path + '\0', at + 1) : -1)
            content.replace(at, size, to.leftJustified(size, '\0'));
    }
    /// The same for a path in a block of its own.
    static void Grow(QByteArray& content, const QByteArray& path, const QByteArray& to)
    {
        const auto padded = [](QByteArray text) {
            return text.leftJustified((text.size() + 4) / 4 * 4, '\0');
        };
        const QByteArray block = padded(path);
        const qsizetype at = content.indexOf(block);
        ASSERT_GT(at, 0);
        content.replace(at, block.size(), padded(to));
        content.replace(at - 20, 4, LittleEndian(static_cast<quint32>(padded(to).size())));
    }

    const QString house = u"Szenen/Haus 木.blend"_s;
    const QString garden = u"Szenen/Alter Garten.blend"_s;
    const QString furniture = u"lib/Möbel.blend"_s;

private:
    void Import(const QString& name, const QString& file)
    {
        QFile source(QStringLiteral(BLENDER_CORPUS "/") + name);
        ASSERT_TRUE(source.open(QFile::ReadOnly)) << source.fileName().toStdString();
        tree.File(file, source.readAll());
    }
};

const Links HouseLinks = {
    L(u"set:SCScene/SQSchnitt#0", u"../Schnitt/Auftakt.png"),
    L(u"set:SCScene/SQSchnitt#1", u"../Schnitt/Mitte ü.png"),
    L(u"set:SCScene/SQSchnitt#2", u"../Schnitt/Ende.png"),
    L(u"SCScene/SQFilmschnitt", u"../Film/Schnitt.avi"),
    L(u"SCScene/SQRegen", u"../Ton/Regen.wav"),
    L(u"OBTuch/MeshCacheModifierData 1", u"../Cache/Tuch.pc2"),
    L(u"LALaterne/NodeShaderTexIES 1", u"../Licht/Laterne.ies"),
    L(u"VODunst", u"../Nebel/Dunst.vdb"),
    L(u"set:VORauch#001", u"../Nebel/Rauch_001.vdb"),
    L(u"set:VORauch#002", u"../Nebel/Rauch_002.vdb"),
    L(u"set:VORauch#003", u"../Nebel/Rauch_003.vdb"),
    L(u"CFStrand.abc", u"../Cache/Strand.abc"),
    L(u"MCFahrt", u"../Film/Kamera fahrt.avi"),
    L(u"set:MCWellenclip#0001", u"../Folge/Welle_0001.png"),
    L(u"set:MCWellenclip#0002", u"../Folge/Welle_0002.png"),
    L(u"set:MCWellenclip#0003", u"../Folge/Welle_0003.png"),
    L(u"set:MCWellenclip#0004", u"../Folge/Welle_0004.png"),
    L(u"IMAbsolut", u"/tmp/Projekt Größe/Bilder/absolut 1.png"),
    L(u"set:IMHolz#1001", u"../Kacheln/Holz hell.1001.png"),
    L(u"set:IMHolz#1002", u"../Kacheln/Holz hell.1002.png"),
    L(u"set:IMHolz#1011", u"../Kacheln/Holz hell.1011.png"),
    L(u"IMHöhe", u"../Bilder/Höhe über Grund.png"),
    L(u"IMSkizze", u"Skizze 木.png"),
    L(u"IMVerloren", u"../Bilder/verloren.png"),
    L(u"set:IMWelle#0001", u"../Folge/Welle_0001.png"),
    L(u"set:IMWelle#0002", u"../Folge/Welle_0002.png"),
    L(u"set:IMWelle#0003", u"../Folge/Welle_0003.png"),
    L(u"set:IMWelle#0004", u"../Folge/Welle_0004.png"),
    L(u"SOGlocke Ö.wav", u"../Ton/Glocke Ö.wav"),
    L(u"SORegen.wav", u"../Ton/Regen.wav"),
    L(u"TXNotiz.txt", u"Notiz.txt"),
    L(u"VFDejaVu Sans Mono Book", u"../Schrift/Mono 字.ttf"),
    L(u"LIDach.blend", u"/tmp/Projekt Größe/lib/Dächer/Dach.blend"),
    L(u"LIMöbel.blend", u"../lib/Möbel.blend"),
};

} // namespace

TEST_F(BlenderPlugin, FindsEveryLinkOfAFileThatBlenderWrote)
{
    const FileTree::Snapshot before = tree.Contents();
    EXPECT_EQ(Read(house), HouseLinks);
    EXPECT_EQ(Read(garden), (Links{L(u"IMHöhe", u"../Bilder/Höhe über Grund.png"),
                                   L(u"LIMöbel.blend", u"../lib/Möbel.blend")}));
    EXPECT_EQ(Read(furniture), (Links{L(u"IMBezug", u"../Bilder/Möbel.png"),
                                      L(u"LIHaus 木.blend", u"../Szenen/Haus 木.blend")}));
    EXPECT_EQ(tree.Contents(), before);
}

TEST_F(BlenderPlugin, RewritesEveryLinkAndNothingElse)
{
    QByteArray expected = Content(house);
    // The paths as they stand in the file; folder and names of strips stand apart.
    for (const char* text : {"//../Schnitt/",
                             "//../Film/",
                             "//../Ton/",
                             "//../Cache/Tuch.pc2",
                             "//../Licht/Laterne.ies",
                             "//../Nebel/Dunst.vdb",
                             "//../Nebel/Rauch_001.vdb",
                             "//../Cache/Strand.abc",
                             "//../Film/Kamera fahrt.avi",
                             "//../Folge/Welle_0001.png",
                             "/tmp/Projekt Größe/Bilder/absolut 1.png",
                             "//../Kacheln/Holz hell.<UDIM>.png",
                             "//../Bilder/Höhe über Grund.png",
                             "//Skizze 木.png",
                             "//../Bilder/verloren.png",
                             "//../Ton/Glocke Ö.wav",
                             "//../Ton/Regen.wav",
                             "//../Schrift/Mono 字.ttf",
                             "/tmp/Projekt Größe/lib/Dächer/Dach.blend",
                             "//../lib/Möbel.blend"})
        Move(expected, text);
    Grow(expected, "//Notiz.txt", "//../Wolke/Notiz.txt");
    Links moved = HouseLinks;
    for (Link& link : moved)
        link.second = u"../Wolke/"_s + link.second.section(u'/', -1);
    for (const Link& link : moved)
        tree.File(u"Szenen/"_s + link.second);
    ASSERT_TRUE(Repath(house, moved)) << context.lines.join(u'\n').toStdString();
    EXPECT_TRUE(Content(house) == expected);
    EXPECT_EQ(Read(house), moved);
}

TEST_F(BlenderPlugin, KeepsTheFramesOfABlenderFile)
{
    const auto frames = [&](const QString& file) {
        const PluginKit::InputFile input(std::filesystem::path(tree.Path(file).toStdU16String()));
        return Formats::Blender::ReadZstdSeekTable(input).value();
    };
    const std::vector<Formats::Blender::ZstdFrame> before = frames(house);
    ASSERT_GT(before.size(), 1U);
    const QByteArray bytes = tree.Read(house);
    ASSERT_TRUE(Repath(house, {L(u"LIMöbel.blend", u"Möbel.blend")}));
    const std::vector<Formats::Blender::ZstdFrame> after = frames(house);
    ASSERT_EQ(after.size(), before.size());
    std::size_t same = 0;
    for (std::size_t i = 0; i < before.size(); ++i) {
        EXPECT_EQ(after[i].contentSize, before[i].contentSize);
        same += after[i].size == before[i].size ? 1 : 0;
    }
    EXPECT_GE(same, before.size() - 1);
    EXPECT_TRUE(tree.Read(house).startsWith(bytes.left(static_cast<qsizetype>(before[0].size))));
}

TEST_F(BlenderPlugin, AFailureReachesTheHostAsAFalseResultAndALogLine)
{
    EXPECT_EQ(ReadFailure(u"a.blend"_s, "BLENDER17-02v0500"),
              u"written by a later version of Blender, whose files are not known (byte 7)"_s);
}

} // namespace Halvern::Test
