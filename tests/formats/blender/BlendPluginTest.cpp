#include "BlendFixture.h"

#include "common/Compression.h"
#include "common/ZstdSeekTable.h"

#include <QtCore/QFile>

namespace Halvern::Test {

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
        Import(QStringLiteral("Haus 木.blend"), house);
        Import(QStringLiteral("Alter Garten.blend"), garden);
        Import(QStringLiteral("Möbel.blend"), furniture);
        for (int frame = 1; frame <= 4; ++frame)
            tree.File(QStringLiteral("Folge/Welle_000%1.png").arg(frame));
        for (int frame = 1; frame <= 3; ++frame)
            tree.File(QStringLiteral("Nebel/Rauch_00%1.vdb").arg(frame));
    }

    QByteArray Content(const QString& file) const
    {
        const Formats::InputFile input(std::filesystem::path(tree.Path(file).toStdU16String()));
        return QByteArray::fromStdString(Formats::ReadDecompressed(input, UINT64_MAX));
    }

    const QString house = QStringLiteral("Szenen/Haus 木.blend");
    const QString garden = QStringLiteral("Szenen/Alter Garten.blend");
    const QString furniture = QStringLiteral("lib/Möbel.blend");

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
    const QByteArray before = tree.Read(house);
    Links moved = HouseLinks;
    for (Link& link : moved)
        link.second = QStringLiteral("../Wolke/") + link.second.section(u'/', -1);
    ASSERT_TRUE(Repath(house, moved)) << context.lines.join(u'\n').toStdString();
    EXPECT_EQ(Read(house), moved);
    // What differs lies where the old file has its paths.
    const QByteArray actual = Content(house);
    const qsizetype growth = actual.size() - expected.size();
    EXPECT_EQ(growth, 12) << "the path of the text has a block of its own, which grew";
    const qsizetype text = expected.indexOf(QByteArray("//Notiz.txt\0", 12));
    ASSERT_GT(text, 0);
    ASSERT_EQ(actual.mid(text, 24), QByteArray("//../Wolke/Notiz.txt\0\0\0\0", 24));
    const QByteArray oldTail = expected.mid(text + 12);
    const QByteArray newTail = actual.mid(text + 24);
    const auto differences = [](const QByteArray& a, const QByteArray& b) {
        int runs = 0;
        qsizetype last = -2000;
        for (qsizetype i = 0; i < a.size(); ++i) {
            if (a[i] == b[i])
                continue;
            runs += i > last + 1000 ? 1 : 0;
            last = i;
        }
        return runs;
    };
    EXPECT_LE(differences(expected.left(text - 24), actual.left(text - 24)) +
                  differences(oldTail, newTail),
              25)
        << "places that changed";
    const Formats::InputFile input(std::filesystem::path(tree.Path(house).toStdU16String()));
    EXPECT_TRUE(Formats::ReadZstdSeekTable(input));
    EXPECT_NE(tree.Read(house), before);
}

TEST_F(BlenderPlugin, RewritesAndBackWithoutATrace)
{
    for (const QString& file : {house, garden, furniture}) {
        const QByteArray before = Content(file);
        const Links links = Read(file);
        Links moved;
        for (const Link& link : links) {
            if (!link.first.startsWith(QStringLiteral("TX")))
                moved.append({link.first,
                              QStringLiteral("ganz wo anders/") + link.second.section(u'/', -1)});
        }
        ASSERT_TRUE(Repath(file, moved)) << context.lines.join(u'\n').toStdString();
        EXPECT_FALSE(Content(file) == before);
        ASSERT_TRUE(Repath(file, links)) << context.lines.join(u'\n').toStdString();
        EXPECT_TRUE(Content(file) == before) << file.toStdString();
    }
}

TEST_F(BlenderPlugin, AFailureReachesTheHostAsAFalseResultAndALogLine)
{
    EXPECT_EQ(
        ReadFailure(QStringLiteral("a.blend"), "BLENDER17-01v0500"),
        QStringLiteral("written by Blender 5.0 or later, whose files are not known (byte 7)"));
}

} // namespace Halvern::Test
