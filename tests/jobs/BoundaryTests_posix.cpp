// SPDX-License-Identifier: Apache-2.0

#include "BoundaryFixture.h"

#include <QtCore/QDir>
#include <QtCore/QFile>

#include <sys/stat.h>
#include <unistd.h>

using namespace Halvern::Jobs;
using namespace Halvern::Test;
using namespace Qt::StringLiterals;

namespace {

class LinksOnTheDisk : public BoundaryFixture
{
protected:
    void Link(const QString& name, const QString& target)
    {
        tree.Folder(name.section(u'/', 0, -2));
        ASSERT_TRUE(QFile::link(tree.Path(target), tree.Path(name)));
    }
};

/// A job of this user on this machine.
class ThisSystem : public ::testing::Test
{
protected:
    QString Say(const QString& path)
    {
        tree.File(u"shed/Shed.gltf"_s);
        Boundary boundary({tree.Path(u"shed/Shed.gltf"_s)}, {}, BoundaryPlacesOfSystem());
        return Words(boundary.Check(path));
    }

    FileTree tree;
};

} // namespace

TEST_F(LinksOnTheDisk, CountByWhereTheyLead)
{
    tree.File(u"etc/shadow"_s).File(u"home/ann/.ssh/id_rsa"_s).File(u"home/ann/wood/oak.png"_s);
    Link(u"home/ann/shed/a.png"_s, u"etc/shadow"_s);
    Link(u"home/ann/shed/b.png"_s, u"home/ann/.ssh/id_rsa"_s);
    Link(u"home/ann/shed/c.png"_s, u"home/ann/wood/oak.png"_s);
    Link(u"home/ann/shed/d.png"_s, u"home/ann/shed/a.png"_s);
    Link(u"home/ann/shed/sub"_s, u"etc"_s);
    Link(u"home/ann/shed/lib"_s, u"home/ann/wood"_s);
    for (const QString& source : {u"home/ann/shed/Shed.gltf"_s, u"home/ann/shed"_s}) {
        sources = QStringList{source};
        EXPECT_EQ(Say(u"home/ann/shed/a.png"_s), u"system"_s);
        EXPECT_EQ(Say(u"home/ann/shed/b.png"_s), u"secret"_s);
        EXPECT_EQ(Say(u"home/ann/shed/c.png"_s), u"outside"_s);
        EXPECT_EQ(Say(u"home/ann/shed/d.png"_s), u"system"_s);
        EXPECT_EQ(Say(u"home/ann/shed/sub/shadow"_s), u"system"_s);
        EXPECT_EQ(Say(u"home/ann/shed/lib/oak.png"_s), u"outside"_s);
    }
}

TEST_F(LinksOnTheDisk, CountByWhereTheyLieToo)
{
    tree.File(u"disk/oak.png"_s);
    Link(u"etc/oak.png"_s, u"disk/oak.png"_s);
    Link(u"home/ann/shed/id_rsa"_s, u"disk/oak.png"_s);
    EXPECT_EQ(Say(u"etc/oak.png"_s), u"system"_s);
    EXPECT_EQ(Say(u"home/ann/shed/id_rsa"_s), u"secret"_s);
    allowed = QStringList{u"disk"_s};
    EXPECT_EQ(Say(u"etc/oak.png"_s), u"outside"_s) << "leads to a folder that is allowed";
}

TEST_F(LinksOnTheDisk, ThatTheUserNamedAreNotNamedSecretsButEverythingElse)
{
    tree.File(u"etc/shadow"_s).File(u"disk/oak.gltf"_s).File(u"disk/id_rsa"_s);
    Link(u"home/ann/in/a.gltf"_s, u"etc/shadow"_s);
    Link(u"home/ann/in/b.gltf"_s, u"disk/oak.gltf"_s);
    Link(u"home/ann/in/c.gltf"_s, u"disk/id_rsa"_s);
    sources =
        QStringList{u"home/ann/in/a.gltf"_s, u"home/ann/in/b.gltf"_s, u"home/ann/in/c.gltf"_s};
    EXPECT_EQ(Say(u"home/ann/in/a.gltf"_s), u"system"_s);
    EXPECT_EQ(Say(u"home/ann/in/b.gltf"_s), u"allowed"_s);
    EXPECT_EQ(Say(u"home/ann/in/c.gltf"_s), u"secret"_s);
    within = QStringList{u"home/ann/parts"_s};
    EXPECT_EQ(Say(u"home/ann/in/a.gltf"_s), u"not within"_s);
    EXPECT_EQ(Say(u"home/ann/in/b.gltf"_s), u"allowed"_s);
}

TEST_F(LinksOnTheDisk, MayStandForEveryFolderThatSomebodyNamed)
{
    tree.Folder(u"disk/projects/shed"_s).File(u"disk/projects/shed/Shed.gltf"_s);
    Link(u"home/ann/work"_s, u"disk/projects"_s);
    Link(u"home/ann/.parts"_s, u"disk/parts"_s);
    sources = QStringList{u"home/ann/work/shed/Shed.gltf"_s};
    EXPECT_EQ(Say(u"home/ann/work/shed/oak.png"_s), u"allowed"_s);
    EXPECT_EQ(Say(u"disk/projects/shed/oak.png"_s), u"allowed"_s);
    within = QStringList{u"home/ann/.parts"_s};
    tree.File(u"disk/parts/bolt.gltf"_s);
    EXPECT_EQ(Say(u"home/ann/.parts/bolt.gltf"_s), u"outside"_s);
    EXPECT_EQ(Say(u"disk/parts/bolt.gltf"_s), u"outside"_s);
    tree.File(u"etc/shadow"_s);
    Link(u"disk/parts/nut.gltf"_s, u"etc/shadow"_s);
    EXPECT_EQ(Say(u"disk/parts/nut.gltf"_s), u"not within"_s);
}

TEST_F(LinksOnTheDisk, AreFollowedByTheSystemsOwnFoldersToo)
{
    tree.File(u"state/home/ann/.ssh/config"_s).Remove(u"home"_s);
    Link(u"home"_s, u"state/home"_s);
    tree.File(u"state/home/ann/shed/Shed.gltf"_s);
    EXPECT_EQ(Say(u"state/home/ann/.ssh/config"_s), u"secret"_s);
    EXPECT_EQ(Say(u"state/home/bob/oak.png"_s), u"other home"_s);
    EXPECT_EQ(Say(u"home/ann/shed/oak.png"_s), u"allowed"_s);
    EXPECT_EQ(Say(u"home/ann/wood/oak.png"_s), u"outside"_s);
}

TEST_F(LinksOnTheDisk, ToPipesAndDevicesAreAnsweredAtOnce)
{
    ASSERT_EQ(::mkfifo(tree.Path(u"home/ann/shed/pipe"_s).toUtf8().constData(), 0600), 0);
    EXPECT_EQ(Say(u"home/ann/shed/pipe"_s), u"allowed"_s);
    ASSERT_TRUE(QFile::link(u"/dev/zero"_s, tree.Path(u"home/ann/shed/zero.png"_s)));
    const QList<BoundaryPlace> places = {{u"/dev"_s, Halvern::Base::PlaceKind::System}};
    Boundary boundary({tree.Path(sources.first())}, {}, places);
    EXPECT_EQ(Words(boundary.Check(tree.Path(u"home/ann/shed/zero.png"_s))), u"system"_s);
}

TEST_F(LinksOnTheDisk, ThatLeadNowhereOrInCirclesCountByWhereTheyLie)
{
    Link(u"home/ann/shed/a.png"_s, u"home/ann/shed/b.png"_s);
    Link(u"home/ann/shed/b.png"_s, u"home/ann/shed/a.png"_s);
    Boundary boundary({tree.Path(sources.first())}, {}, Places());
    EXPECT_EQ(Words(boundary.Check(tree.Path(u"home/ann/shed/a.png"_s))), u"allowed"_s);
    EXPECT_EQ(Words(boundary.Check(tree.Path(u"etc/nothing/a.png"_s))), u"system"_s);
}

TEST_F(LinksOnTheDisk, ToAFolderInAnotherLetterCaseAreToAnotherFolder)
{
    sources = QStringList{u"home/ann/shed"_s};
    EXPECT_EQ(Say(u"home/ann/Shed/oak.png"_s), u"outside"_s);
    EXPECT_EQ(Say(u"ETC/shadow"_s), u"outside"_s);
    EXPECT_EQ(Say(u"Home/ann/.config/app"_s), u"outside"_s);
}

TEST_F(ThisSystem, KeepsItsOwn)
{
    EXPECT_EQ(Say(u"/etc/shadow"_s), u"system"_s);
    EXPECT_EQ(Say(u"/etc/passwd"_s), u"system"_s);
    EXPECT_EQ(Say(u"/proc/self/environ"_s), u"system"_s);
    EXPECT_EQ(Say(u"/proc/self/root/usr/share/x.png"_s), u"system"_s);
    EXPECT_EQ(Say(u"/dev/stdin"_s), u"system"_s);
    EXPECT_EQ(Say(u"/sys/kernel/notes"_s), u"system"_s);
    EXPECT_EQ(Say(u"/run/secrets/key"_s), u"system"_s);
    EXPECT_EQ(Say(u"/var/log/syslog"_s), u"system"_s);
    EXPECT_EQ(Say(u"/bin/sh"_s), u"system"_s);
    EXPECT_EQ(Say(u"/usr/share/fonts/Sans.ttf"_s), u"outside"_s);
    EXPECT_EQ(Say(u"/usr/local/share/parts/bolt.stl"_s), u"outside"_s);
    EXPECT_EQ(Say(u"/opt/cad/parts/bolt.stl"_s), u"outside"_s);
    EXPECT_EQ(Say(u"/mnt/team/oak.png"_s), u"outside"_s);
    EXPECT_EQ(Say(u"/run/media/ann/stick/oak.png"_s), u"outside"_s);
    EXPECT_EQ(Say(u"/home/nobody-has-this-name/oak.png"_s), u"other home"_s);
}

TEST_F(ThisSystem, KeepsTheSecretsOfTheUserWhateverTheEnvironmentSays)
{
    const QByteArray home = qgetenv("HOME");
    qputenv("HOME", tree.Path(u"home"_s).toUtf8());
    EXPECT_EQ(Say(tree.Path(u"home/.ssh/config"_s)), u"secret"_s);
    EXPECT_EQ(Say(tree.Path(u"home/oak.png"_s)), u"outside"_s);
    EXPECT_EQ(Say(tree.Path(u"lib/oak.png"_s)), u"outside"_s) << "beside HOME";
    if (::getuid() == 0) {
        EXPECT_EQ(Say(u"/root/.ssh/config"_s), u"secret"_s);
        EXPECT_EQ(Say(u"/root/oak.png"_s), u"outside"_s);
    } else {
        EXPECT_EQ(Say(u"/root/oak.png"_s), u"other home"_s);
    }
    qputenv("HOME", home);
}

TEST_F(ThisSystem, CountsLinksOfTheSelectionByWhereTheyLead)
{
    tree.File(u"shed/Shed.gltf"_s);
    ASSERT_TRUE(QFile::link(u"/etc/shadow"_s, tree.Path(u"shed/oak.png"_s)));
    ASSERT_TRUE(QFile::link(u"/proc/self"_s, tree.Path(u"shed/self"_s)));
    Boundary boundary({tree.Path(u"shed"_s)}, {});
    EXPECT_EQ(Words(boundary.Check(tree.Path(u"shed/oak.png"_s))), u"system"_s);
    EXPECT_EQ(Words(boundary.Check(tree.Path(u"shed/self/environ"_s))), u"system"_s);
    EXPECT_EQ(Words(boundary.Check(tree.Path(u"shed/Shed.gltf"_s))), u"allowed"_s);
}
