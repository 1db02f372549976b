// SPDX-License-Identifier: Apache-2.0

#include "BoundaryFixture.h"

#include <QtCore/QDir>

using namespace Halvern::Jobs;
using namespace Halvern::Test;
using namespace Qt::StringLiterals;

namespace {

/// A job of this user on this machine.
class BoundaryOnWindows : public ::testing::Test
{
protected:
    QString Say(const QString& path)
    {
        tree.File(u"shed/Shed.gltf"_s);
        Boundary boundary({tree.Path(u"shed/Shed.gltf"_s)}, {});
        return Words(boundary.Check(path));
    }
    static QString Of(const char* variable)
    {
        const QString folder = QDir::fromNativeSeparators(qEnvironmentVariable(variable));
        EXPECT_FALSE(folder.isEmpty()) << variable;
        return folder;
    }

    FileTree tree;
};

} // namespace

TEST_F(BoundaryOnWindows, KeepsWhatIsTheSystems)
{
    const QString windows = Of("SystemRoot");
    EXPECT_EQ(Say(windows + u"/System32/config/SAM"_s), u"system"_s);
    EXPECT_EQ(Say(windows.toUpper() + u"/win.ini"_s), u"system"_s);
    EXPECT_EQ(Say(windows + u"/Fonts/arial.ttf"_s), u"outside"_s);
    EXPECT_EQ(Say(windows.left(3) + u"Windows.old/Users/x.png"_s), u"system"_s);
    EXPECT_EQ(Say(windows.left(3) + u"$Recycle.Bin/x.png"_s), u"system"_s);
    EXPECT_EQ(Say(windows.left(3) + u"System Volume Information/x.png"_s), u"system"_s);
    EXPECT_EQ(Say(Of("ProgramFiles") + u"/Cad/Library/bolt.prt"_s), u"outside"_s);
    EXPECT_EQ(Say(Of("ProgramData") + u"/Cad/Library/bolt.prt"_s), u"outside"_s);
    EXPECT_EQ(Say(Of("ProgramData") + u"/Microsoft/Crypto/RSA/key"_s), u"secret"_s);
    EXPECT_EQ(Say(Of("ProgramData") + u"/ssh/sshd_config"_s), u"secret"_s);
}

TEST_F(BoundaryOnWindows, KeepsWhatIsSecretInTheHome)
{
    const QString home = Of("USERPROFILE");
    EXPECT_EQ(Say(Of("APPDATA") + u"/Microsoft/Credentials/x"_s), u"secret"_s);
    EXPECT_EQ(Say(Of("LOCALAPPDATA") + u"/Google/Chrome/User Data/x"_s), u"secret"_s);
    EXPECT_EQ(Say(home + u"/AppData/LocalLow/x"_s), u"secret"_s);
    EXPECT_EQ(Say(home + u"/.ssh/config"_s), u"secret"_s);
    EXPECT_EQ(Say(home + u"/ntuser.dat"_s), u"secret"_s);
    EXPECT_EQ(Say(home + u"/Documents/oak.png"_s), u"outside"_s);
    EXPECT_EQ(Say(Of("LOCALAPPDATA") + u"/Microsoft/Windows/Fonts/own.ttf"_s), u"outside"_s);
    EXPECT_EQ(Say(Of("LOCALAPPDATA") + u"/Programs/Cad/bolt.prt"_s), u"outside"_s);
    EXPECT_EQ(Say(Of("LOCALAPPDATA") + u"/Temp/oak.png"_s), u"outside"_s);
}

TEST_F(BoundaryOnWindows, KeepsTheHomesOfOthersButNotWhatIsShared)
{
    const QString homes = QFileInfo(Of("USERPROFILE")).path();
    EXPECT_EQ(Say(homes + u"/somebody else/Documents/oak.png"_s), u"other home"_s);
    EXPECT_EQ(Say(homes + u"/Default/oak.png"_s), u"other home"_s);
    EXPECT_EQ(Say(Of("PUBLIC") + u"/Documents/oak.png"_s), u"outside"_s);
}

TEST_F(BoundaryOnWindows, KeepsDevicesAndTheSharesOfAdministrators)
{
    for (const QString& path :
         {u"//./PhysicalDrive0"_s, u"\\\\.\\pipe\\x"_s, u"//?/C:/Windows/win.ini"_s,
          u"\\\\?\\GLOBALROOT\\Device\\HarddiskVolumeShadowCopy1\\x"_s,
          u"//corsync/C$/Users/x.png"_s, u"\\\\corsync\\ADMIN$\\x.png"_s})
        EXPECT_EQ(Say(path), u"system"_s) << path.toStdString();
    EXPECT_EQ(Say(u"//corsync/share/oak.png"_s), u"outside"_s);
}

TEST_F(BoundaryOnWindows, KnowsFoldersHoweverTheirNamesAreTyped)
{
    tree.File(u"Shed/images/Oak.png"_s).File(u"other/Oak.png"_s);
    const QString source = tree.Path(u"SHED/Shed.gltf"_s);
    tree.File(u"Shed/Shed.gltf"_s);
    Boundary boundary({source}, {});
    EXPECT_EQ(Words(boundary.Check(tree.Path(u"Shed/images/Oak.png"_s))), u"allowed"_s);
    EXPECT_EQ(Words(boundary.Check(tree.Path(u"shed/IMAGES/oak.PNG"_s).toUpper())), u"allowed"_s);
    EXPECT_EQ(Words(boundary.Check(QDir::toNativeSeparators(tree.Path(u"shed/Oak.png"_s)))),
              u"allowed"_s);
    EXPECT_EQ(Words(boundary.Check(tree.Path(u"other/Oak.png"_s))), u"outside"_s);
}
