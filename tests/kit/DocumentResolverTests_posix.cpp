// SPDX-License-Identifier: Apache-2.0

// Names with a ":", which only POSIX has.

#include "FormatFixture.h"

#include "gltf/GltfResolver.h"

namespace Halvern::Test {

namespace {

class ColonsInNames : public ResolverFixture
{
protected:
    ColonsInNames() : ResolverFixture(m_resolver) {}

    /// The path of the one link of a document.
    QString PathFor(const QString& uri)
    {
        tree.File(m_file, "{\"uri\": \"" + uri.toUtf8() + "\"}");
        return PathsOf(Read(m_file)).join(u'\n');
    }

    const QString m_file = QStringLiteral("p/a.gltf");

private:
    Formats::Gltf::GltfResolver m_resolver;
};

} // namespace

TEST_F(ColonsInNames, AFileThatIsThereIsNamedByItsWholePath)
{
    const QString shot = QStringLiteral("Screenshot 12:30:00.png");
    tree.File(QStringLiteral("p/") + shot).File(QStringLiteral("12:30/ü.png"));
    EXPECT_EQ(PathFor(shot), tree.Path(QStringLiteral("p/") + shot));
    EXPECT_EQ(PathFor(QStringLiteral("./") + shot), tree.Path(QStringLiteral("p/") + shot));
    EXPECT_EQ(PathFor(QStringLiteral("../12:30/ü.png")), tree.Path(QStringLiteral("12:30/ü.png")));
    const QString absolute = tree.Path(QStringLiteral("12:30/ü.png"));
    EXPECT_EQ(PathFor(absolute), absolute);
}

TEST_F(ColonsInNames, AnyOtherNameStaysAsItIs)
{
    tree.Folder(QStringLiteral("p/12:30")).File(QStringLiteral("p/b.png"));
    for (const QString& path : {QStringLiteral("../12:30/gone.png"), QStringLiteral("b.png"),
                                QStringLiteral("../C:/b.png")})
        EXPECT_EQ(PathFor(path), path);
}

TEST_F(ColonsInNames, AWholePathThatIsTooLongForALinkIsNotTaken)
{
    const QString path =
        QString(120, u'x') + u'/' + QString(120, u'y') + QStringLiteral("/1:2.png");
    tree.File(QStringLiteral("p/") + path);
    ASSERT_GT(tree.Path(QStringLiteral("p/") + path).size(), 259);
    EXPECT_EQ(PathFor(path), path);
}

TEST_F(ColonsInNames, NewPathsAreWrittenRelative)
{
    tree.File(m_file, R"({"images":[{"uri":"./12:30/a.png"},{"uri":"../12:30/b.png"}]})");
    tree.File(QStringLiteral("p/12:30/a.png"));
    EXPECT_TRUE(Repath(m_file, {LinkTo(u"/images/0/uri", u"12:30/a.png"),
                                LinkTo(u"/images/1/uri", u"12:31/b.png")}))
        << context.lines.join(u'\n').toStdString();
    EXPECT_EQ(tree.Read(m_file), R"({"images":[{"uri":"./12:30/a.png"},{"uri":"./12:31/b.png"}]})");
}

} // namespace Halvern::Test
