// SPDX-License-Identifier: Apache-2.0

// Documents imported by the command with the built plug-ins. FreeCAD takes the files of some
// properties by their absolute paths, which depend on where the copy will be.

#include "CommandFixture.h"
#include "FreecadFixture.h"

namespace Halvern::Test {

namespace {

/// Documents as FreeCAD packs them.
struct Documents : FreecadFixture
{
    static QByteArray With(const QStringList& pictures)
    {
        QByteArray properties;
        for (const QString& picture : pictures)
            properties += Property("File" + QByteArray::number(properties.size()), "File",
                                   "<String value=\"" + picture.toUtf8() + "\"/>\n");
        return Packed(Document(properties));
    }
};

/// work/p/doc.FCStd shows work/pictures/a.png and, once that is there, b.png.
class FreecadImport : public CommandFixture
{
protected:
    FreecadImport()
    {
        const QString pictures = tree.Path(u"work/pictures"_s);
        tree.File(u"work/p/doc.FCStd"_s,
                  Documents::With({pictures + u"/a.png"_s, pictures + u"/b.png"_s}))
            .File(u"work/pictures/a.png"_s, "a");
    }
    CommandResult Bring() const { return Import({u"p/doc.FCStd"_s, u"--to"_s, u"Demo/deep"_s}); }
    QStringList Pictures() const
    {
        const CommandResult links = Run({u"links"_s, u"--json"_s, tree.Path(Copy)});
        QStringList pictures;
        for (const QJsonObject& event : links.Json())
            if (event.value(u"event"_s) == u"link"_s)
                pictures.append(event.value(u"path"_s).toString());
        return pictures;
    }
    QString InCloud(const QString& name) const { return tree.Path(u"cloud/Demo/deep/"_s + name); }

    const QString Copy = u"cloud/Demo/deep/doc.FCStd"_s;
};

} // namespace

TEST_F(FreecadImport, AFileByItsAbsolutePathIsThatOfTheCopy)
{
    const CommandResult result = Bring();
    EXPECT_EQ(result.exitCode, 4) << ::testing::PrintToString(result);
    EXPECT_EQ(Pictures(),
              (QStringList{InCloud(u"pictures/a.png"_s), tree.Path(u"work/pictures/b.png"_s)}))
        << ::testing::PrintToString(result);
    EXPECT_EQ(Cloud().keys(),
              (QStringList{u"Demo/deep/doc.FCStd"_s, u"Demo/deep/pictures/a.png"_s}));
}

TEST_F(FreecadImport, ACopyGetsTheAbsolutePathOfAFileThatCameLater)
{
    ASSERT_EQ(Bring().exitCode, 4);
    tree.File(u"work/pictures/b.png"_s, "b");
    const CommandResult result = Bring();
    EXPECT_EQ(result.exitCode, 0) << ::testing::PrintToString(result);
    EXPECT_EQ(Pictures(), (QStringList{InCloud(u"pictures/a.png"_s), InCloud(u"pictures/b.png"_s)}))
        << ::testing::PrintToString(result);
    EXPECT_EQ(Cloud().keys(), (QStringList{u"Demo/deep/doc.FCStd"_s, u"Demo/deep/pictures/a.png"_s,
                                           u"Demo/deep/pictures/b.png"_s}));
    const FileTree::Snapshot before = Cloud();
    EXPECT_EQ(Bring().exitCode, 0);
    EXPECT_EQ(Cloud(), before);
}

} // namespace Halvern::Test
