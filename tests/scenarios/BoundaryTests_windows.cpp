// SPDX-License-Identifier: Apache-2.0

// A design file does not pull secrets and files of the system into the cloud folder.

#include "ScenarioFixture.h"

namespace Halvern::Test {

namespace {

class BoundaryOnWindows : public ScenarioFixture
{};

} // namespace

TEST_F(BoundaryOnWindows, RefusesTheSystemsFolderAndThoseOfCredentials)
{
    const QString system = QDir::fromNativeSeparators(qEnvironmentVariable("SystemRoot"));
    tree.File(u"home/.ssh/id_rsa"_s, "PRIVATE KEY")
        .File(u"home/AppData/Roaming/Microsoft/Credentials/key"_s, "PRIVATE KEY");
    for (const QString& link : {system + u"/win.ini"_s, tree.Path(u"home/.ssh/id_rsa"_s),
                                tree.Path(u"home/AppData/Roaming/Microsoft/Credentials/key"_s)}) {
        Design(u"work/top.svg"_s, {link});
        const ImportReport report = Report({u"top.svg"_s, u"--to"_s, u"Demo"_s});
        EXPECT_EQ(report.exitCode, 8) << link.toStdString() << ::testing::PrintToString(report);
        EXPECT_EQ(tree.Contents(u"cloud"_s).size(), 1);
        EXPECT_EQ(tree.Read(u"cloud/Demo/top.svg"_s), tree.Read(u"work/top.svg"_s));
    }
}

} // namespace Halvern::Test
