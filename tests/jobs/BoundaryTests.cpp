// SPDX-License-Identifier: Apache-2.0

#include "BoundaryFixture.h"

#include <QtCore/QDir>
#include <QtCore/QElapsedTimer>

using namespace Halvern::Jobs;
using namespace Halvern::Test;
using namespace Qt::StringLiterals;

namespace {

class TheBoundary : public BoundaryFixture
{};

} // namespace

TEST_F(TheBoundary, LetsThroughWhatLiesInTheProjectAndMarksWhatLiesElsewhere)
{
    EXPECT_EQ(Say(u"home/ann/shed/Shed.gltf"_s), u"allowed"_s);
    EXPECT_EQ(Say(u"home/ann/shed/Shed.bin"_s), u"allowed"_s);
    EXPECT_EQ(Say(u"home/ann/shed/images/oak.png"_s), u"allowed"_s);
    EXPECT_EQ(Say(u"home/ann/shed2/oak.png"_s), u"outside"_s);
    EXPECT_EQ(Say(u"home/ann/oak.png"_s), u"outside"_s);
    EXPECT_EQ(Say(u"disk/wood/oak.png"_s), u"outside"_s);
    EXPECT_EQ(Say(u"usr/share/fonts/Sans.ttf"_s), u"outside"_s);
    EXPECT_EQ(Say(u"var/tmp/oak.png"_s), u"outside"_s);
}

TEST_F(TheBoundary, RefusesPlacesOfTheSystem)
{
    EXPECT_EQ(Say(u"etc/shadow"_s), u"system"_s);
    EXPECT_EQ(Say(u"etc/ssl/private/host.crt"_s), u"system"_s);
    EXPECT_EQ(Say(u"usr/bin/gpg"_s), u"system"_s);
    EXPECT_EQ(Say(u"usr/shared/x.png"_s), u"system"_s);
    EXPECT_EQ(Say(u"var/mail/ann"_s), u"system"_s);
}

TEST_F(TheBoundary, RefusesWhatIsHiddenInAHomeAndNothingThatIsHiddenElsewhere)
{
    EXPECT_EQ(Say(u"home/ann/.ssh/known_hosts"_s), u"secret"_s);
    EXPECT_EQ(Say(u"home/ann/.local/share/FreeCAD/Mod/bolt.FCStd"_s), u"secret"_s);
    EXPECT_EQ(Say(u"home/ann/.bash_history"_s), u"secret"_s);
    EXPECT_EQ(Say(u"home/ann/NTUSER.DAT"_s), u"secret"_s);
    EXPECT_EQ(Say(u"programs/Signal/messages.db"_s), u"secret"_s);
    EXPECT_EQ(Say(u"home/ann/shed/.textures/oak.png"_s), u"allowed"_s);
    EXPECT_EQ(Say(u"home/ann/Documents/.textures/oak.png"_s), u"outside"_s);
    EXPECT_EQ(Say(u"disk/.textures/oak.png"_s), u"outside"_s);
}

TEST_F(TheBoundary, RefusesTheHomesOfOthers)
{
    EXPECT_EQ(Say(u"home/bob/Documents/oak.png"_s), u"other home"_s);
    EXPECT_EQ(Say(u"home/bob/.ssh/known_hosts"_s), u"secret"_s);
    EXPECT_EQ(Say(u"home/oak.png"_s), u"other home"_s);
    EXPECT_EQ(Say(u"home/anna/oak.png"_s), u"other home"_s);
    EXPECT_EQ(Say(u"root/oak.png"_s), u"other home"_s);
}

TEST_F(TheBoundary, RefusesKeysByTheirNamesWhereverTheyLieButInTheSelection)
{
    for (const QString& name : {u"id_ed25519"_s, u"ID_RSA"_s, u"server.pem"_s, u"Tax.kdbx"_s,
                                u"putty.ppk"_s, u".env"_s, u".netrc"_s}) {
        EXPECT_EQ(Say(u"home/ann/shed/"_s + name), u"secret"_s) << name.toStdString();
        EXPECT_EQ(Say(u"disk/"_s + name), u"secret"_s) << name.toStdString();
    }
    for (const QString& name : {u"id_rsa.pub"_s, u"id_rsa.png"_s, u"keys.stl"_s, u"pem"_s})
        EXPECT_EQ(Say(u"home/ann/shed/"_s + name), u"allowed"_s) << name.toStdString();
    sources = QStringList{u"home/ann/shed"_s};
    EXPECT_EQ(Say(u"home/ann/shed/id_ed25519"_s), u"allowed"_s);
}

TEST_F(TheBoundary, RefusesWhatProgramsKeepApartAlsoInTheSelection)
{
    sources = QStringList{u"home/ann/shed"_s};
    for (const QString& path : {u"shed/.git/config"_s, u"shed/sub/.hg/hgrc"_s,
                                u"work/.AWS/credentials"_s, u"shed/.svn/wc.db"_s})
        EXPECT_EQ(Say(u"home/ann/"_s + path), u"secret"_s) << path.toStdString();
    for (const QString& path : {u"shed/.git/annex/objects/ab/cd/oak.png"_s, u"shed/x.git/oak.png"_s,
                                u"shed/.github/oak.png"_s, u"shed/.gitignore"_s})
        EXPECT_EQ(Say(u"home/ann/"_s + path), u"allowed"_s) << path.toStdString();
    within = QStringList{u"home/ann/shed/.git"_s};
    EXPECT_EQ(Say(u"home/ann/shed/.git/config"_s), u"allowed"_s);
}

TEST_F(TheBoundary, ReadsAPathAsItIsMeantWithWhatLeadsUpInIt)
{
    EXPECT_EQ(Say(u"home/ann/shed/../.ssh/known_hosts"_s), u"secret"_s);
    EXPECT_EQ(Say(u"home/ann/shed/../../../etc/shadow"_s), u"system"_s);
    EXPECT_EQ(Say(u"home/ann/.ssh/../shed//./oak.png"_s), u"allowed"_s);
    EXPECT_EQ(Say(u"usr/share/../bin/gpg"_s), u"system"_s);
}

TEST_F(TheBoundary, LetsThroughTheSelectionWhereverItLies)
{
    tree.Folder(u"home/bob/shed"_s).Folder(u"home/ann/.config/app"_s);
    sources = QStringList{u"etc/logo.svg"_s, u"home/bob/shed"_s, u"home/ann/.config/app"_s};
    EXPECT_EQ(Say(u"etc/logo.svg"_s), u"allowed"_s);
    EXPECT_EQ(Say(u"home/bob/shed/a/b/oak.png"_s), u"allowed"_s);
    EXPECT_EQ(Say(u"home/ann/.config/app/x.gltf"_s), u"allowed"_s);
    EXPECT_EQ(Say(u"home/ann/.config/other/x.gltf"_s), u"secret"_s);
    EXPECT_EQ(Say(u"home/bob/oak.png"_s), u"other home"_s);
    EXPECT_EQ(Say(u"etc/shadow"_s), u"system"_s) << "a place of the system is no project";
}

TEST_F(TheBoundary, LetsThroughTheCloudFolder)
{
    EXPECT_EQ(Say(u"home/ann/Corsync/Demo/id_rsa"_s), u"allowed"_s);
    within = QStringList{u"disk"_s};
    EXPECT_EQ(Say(u"home/ann/Corsync/Demo/oak.png"_s), u"allowed"_s);
}

TEST_F(TheBoundary, LetsThroughAProjectThatLiesInARefusedPlaceButNotTheSecretsInIt)
{
    sources = QStringList{u"var/www/site/models/Shed.gltf"_s};
    tree.File(u"var/www/site/models/Shed.gltf"_s).Folder(u"var/www/site/.git"_s);
    EXPECT_EQ(Say(u"var/www/site/textures/oak.png"_s), u"allowed"_s);
    EXPECT_EQ(Say(u"var/www/site/id_rsa"_s), u"secret"_s);
    EXPECT_EQ(Say(u"var/www/other/oak.png"_s), u"system"_s);
    sources = QStringList{u"home/bob/Shed.gltf"_s};
    tree.File(u"home/bob/Shed.gltf"_s);
    EXPECT_EQ(Say(u"home/bob/oak.png"_s), u"other home"_s) << "a home is no project";
    sources = QStringList{u"home/bob/shed/Shed.gltf"_s};
    tree.File(u"home/bob/shed/Shed.gltf"_s);
    EXPECT_EQ(Say(u"home/bob/shed/oak.png"_s), u"allowed"_s);
    sources = QStringList{u"home/ann/.ssh/Shed.gltf"_s};
    tree.File(u"home/ann/.ssh/Shed.gltf"_s);
    EXPECT_EQ(Say(u"home/ann/.ssh/known_hosts"_s), u"secret"_s);
}

TEST_F(TheBoundary, TakesTheVersionControlledFolderForTheProject)
{
    for (const QString& name : {u".git"_s, u".hg"_s, u".svn"_s}) {
        tree.Folder(u"home/ann/work/"_s + name);
        sources = QStringList{u"home/ann/work/shed/deep/Shed.gltf"_s};
        tree.File(sources.first());
        EXPECT_EQ(Say(u"home/ann/work/textures/oak.png"_s), u"allowed"_s) << name.toStdString();
        EXPECT_EQ(Say(u"home/ann/other/oak.png"_s), u"outside"_s) << name.toStdString();
        tree.Remove(u"home/ann/work"_s);
    }
    tree.File(u"home/ann/work/.git"_s, "gitdir: ../repository/.git/worktrees/work");
    tree.File(sources.first());
    EXPECT_EQ(Say(u"home/ann/work/textures/oak.png"_s), u"allowed"_s) << "a further work tree";
}

TEST_F(TheBoundary, TakesNeitherAHomeNorWhatHoldsOneForTheProject)
{
    tree.Folder(u"home/ann/.git"_s).Folder(u"home/.git"_s).Folder(u".git"_s);
    EXPECT_EQ(Say(u"home/ann/shed/oak.png"_s), u"allowed"_s);
    EXPECT_EQ(Say(u"home/ann/other/oak.png"_s), u"outside"_s);
    EXPECT_EQ(Say(u"home/bob/oak.png"_s), u"other home"_s);
    EXPECT_EQ(Say(u"etc/shadow"_s), u"system"_s);
    sources = QStringList{u"home/ann/Shed.gltf"_s};
    tree.File(sources.first());
    EXPECT_EQ(Say(u"home/ann/oak.png"_s), u"outside"_s);
    EXPECT_EQ(Say(u"home/ann/.ssh/known_hosts"_s), u"secret"_s);
}

TEST_F(TheBoundary, TakesTheFolderThatHoldsAllSourcesForTheProjectUnlessItIsTooLarge)
{
    tree.Folder(u"home/ann/work/a"_s).File(u"home/ann/work/b/x.gltf"_s);
    sources = QStringList{u"home/ann/work/a"_s, u"home/ann/work/b/x.gltf"_s};
    EXPECT_EQ(Say(u"home/ann/work/c/oak.png"_s), u"allowed"_s);
    EXPECT_EQ(Say(u"home/ann/oak.png"_s), u"outside"_s);
    tree.File(u"home/ann/other/y.gltf"_s);
    sources.append(u"home/ann/other/y.gltf"_s);
    EXPECT_EQ(Say(u"home/ann/work/c/oak.png"_s), u"outside"_s);
    EXPECT_EQ(Say(u"home/ann/work/b/oak.png"_s), u"allowed"_s);
    EXPECT_EQ(Say(u"home/ann/other/oak.png"_s), u"allowed"_s);
}

TEST_F(TheBoundary, IsStrictWhenFoldersAreNamed)
{
    within = QStringList{u"disk/wood"_s, u"home/ann/.local/share/FreeCAD"_s};
    tree.Folder(u"home/ann/shed2"_s);
    EXPECT_EQ(Say(u"disk/wood/oak.png"_s), u"outside"_s);
    EXPECT_EQ(Say(u"home/ann/.local/share/FreeCAD/bolt.FCStd"_s), u"outside"_s);
    EXPECT_EQ(Say(u"home/ann/shed/Shed.gltf"_s), u"allowed"_s) << "the selection";
    EXPECT_EQ(Say(u"home/ann/shed/oak.png"_s), u"not within"_s);
    EXPECT_EQ(Say(u"disk/woods/oak.png"_s), u"not within"_s);
    EXPECT_EQ(Say(u"usr/share/oak.png"_s), u"not within"_s);
    EXPECT_EQ(Say(u"etc/shadow"_s), u"not within"_s);
    sources = QStringList{u"home/ann/shed"_s};
    EXPECT_EQ(Say(u"home/ann/shed/oak.png"_s), u"allowed"_s);
    allowed = QStringList{u"disk/fonts"_s};
    EXPECT_EQ(Say(u"disk/fonts/Sans.ttf"_s), u"not within"_s) << "only lifts refusals";
}

TEST_F(TheBoundary, IsLiftedByTheSettingsAndNotStrictForThem)
{
    allowed = QStringList{u"home/ann/.local/share/FreeCAD/"_s, u"home/bob/parts"_s};
    EXPECT_EQ(Say(u"home/ann/.local/share/FreeCAD/bolt.FCStd"_s), u"outside"_s);
    EXPECT_EQ(Say(u"home/bob/parts/bolt.FCStd"_s), u"outside"_s);
    EXPECT_EQ(Say(u"home/ann/.local/share/keyrings/login"_s), u"secret"_s);
    EXPECT_EQ(Say(u"home/bob/bolt.FCStd"_s), u"other home"_s);
    EXPECT_EQ(Say(u"disk/oak.png"_s), u"outside"_s);
}

TEST_F(TheBoundary, IsNotLiftedByARelativeFolder)
{
    const QString here = QDir::currentPath();
    Boundary boundary({tree.Path(sources.first())}, {{}, {u"."_s, u""_s}, {}},
                      {{here, Halvern::Base::PlaceKind::System}});
    EXPECT_EQ(Words(boundary.Check(here + u"/oak.png"_s)), u"system"_s);
}

TEST_F(TheBoundary, AnswersForALongListOfSourcesAndLinksInSecondsNotMinutes)
{
    constexpr int files = 20000;
    QStringList many;
    for (int i = 0; i < files; ++i)
        many.append(tree.Path(u"home/ann/p/%1/%2.gltf"_s.arg(i % 500).arg(i)));
    QElapsedTimer timer;
    timer.start();
    Boundary boundary(many, {}, Places());
    for (int i = 0; i < files; ++i)
        ASSERT_EQ(Words(boundary.Check(tree.Path(u"home/ann/q/%1/%2.png"_s.arg(i % 500).arg(i)))),
                  u"outside"_s);
    EXPECT_LT(timer.elapsed(), 60000);
}
