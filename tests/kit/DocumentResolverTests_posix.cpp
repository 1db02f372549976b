// SPDX-License-Identifier: Apache-2.0

// Names with a ":", which only POSIX has.

#include "FormatFixture.h"

#include "gltf/GltfResolver.h"

namespace Halvern::Test {

using namespace Qt::StringLiterals;

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

    const QString m_file = u"p/a.gltf"_s;

private:
    Formats::Gltf::GltfResolver m_resolver;
};

} // namespace

TEST_F(ColonsInNames, AFileThatIsThereIsNamedByItsWholePath)
{
    const QString shot = u"Screenshot 12:30:00.png"_s;
    tree.File(u"p/"_s + shot).File(u"12:30/ü.png"_s);
    EXPECT_EQ(PathFor(shot), tree.Path(u"p/"_s + shot));
    EXPECT_EQ(PathFor(u"./"_s + shot), tree.Path(u"p/"_s + shot));
    EXPECT_EQ(PathFor(u"../12:30/ü.png"_s), tree.Path(u"12:30/ü.png"_s));
    const QString absolute = tree.Path(u"12:30/ü.png"_s);
    EXPECT_EQ(PathFor(absolute), absolute);
}

TEST_F(ColonsInNames, AnyOtherNameStaysAsItIs)
{
    tree.Folder(u"p/12:30"_s).File(u"p/b.png"_s);
    for (const QString& path : {u"../12:30/gone.png"_s, u"b.png"_s, u"../C:/b.png"_s})
        EXPECT_EQ(PathFor(path), path);
}

TEST_F(ColonsInNames, AWholePathThatIsTooLongForALinkIsNotTaken)
{
    const QString path = QString(120, u'x') + u'/' + QString(120, u'y') + u"/1:2.png"_s;
    tree.File(u"p/"_s + path);
    ASSERT_GT(tree.Path(u"p/"_s + path).size(), 259);
    EXPECT_EQ(PathFor(path), path);
}

TEST_F(ColonsInNames, NewPathsAreWrittenRelative)
{
    tree.File(m_file, R"({"images":[{"uri":"./12:30/a.png"},{"uri":"../12:30/b.png"}]})");
    tree.File(u"p/12:30/a.png"_s);
    EXPECT_TRUE(Repath(m_file, {LinkTo(u"/images/0/uri", u"12:30/a.png"),
                                LinkTo(u"/images/1/uri", u"12:31/b.png")}))
        << context.lines.join(u'\n').toStdString();
    EXPECT_EQ(tree.Read(m_file), R"({"images":[{"uri":"./12:30/a.png"},{"uri":"./12:31/b.png"}]})");
}

} // namespace Halvern::Test
