// SPDX-License-Identifier: Apache-2.0

#include "plugins/XmlFiler.h"

#include "FileTree.h"

#include <QtCore/QDir>
#include <QtCore/QFile>

#include <gtest/gtest.h>

namespace {

using namespace Halvern::FileLink;
using namespace Halvern::Test;

class XmlFilerOnADocument : public ::testing::Test
{
protected:
    XmlFilerOnADocument()
    {
        tree.File(QStringLiteral("doc.xml"),
                  "<?xml version=\"1.0\"?><!-- before -->\n"
                  "<Root Name=\"the root\">text<!-- c -->"
                  "<A Id=\"1\"><B Id=\"1.1\"/><B Id=\"1.2\"/></A><A Id=\"2\"><C/></A>"
                  "</Root>");
        opened = filer.Open(tree.Path(QStringLiteral("doc.xml")));
    }
    QString Id() const { return filer.GetAttribute(QStringLiteral("Id"), QStringLiteral("none")); }

    FileTree tree;
    XmlFiler filer{XmlFiler::KeepTr};
    bool opened = false;
};

TEST_F(XmlFilerOnADocument, OpenMakesTheRootElementCurrent)
{
    EXPECT_TRUE(opened);
    EXPECT_EQ(filer.GetTag(), QStringLiteral("Root"));
    EXPECT_EQ(filer.FileName(), tree.Path(QStringLiteral("doc.xml")));
}

TEST_F(XmlFilerOnADocument, ARelativePathIsWalkedFromTheCurrentElementToFirstMatches)
{
    EXPECT_TRUE(filer.MoveTo(QStringLiteral("A")));
    EXPECT_TRUE(filer.MoveTo(QStringLiteral("B")));
    EXPECT_EQ(Id(), QStringLiteral("1.1"));
}

TEST_F(XmlFilerOnADocument, AnAbsolutePathMayNameTheRootOrLeaveItOut)
{
    for (const char* path : {"/Root/A/B", "/A/B", "\\Root\\A\\B", "  //Root//A/B/ "}) {
        SCOPED_TRACE(path);
        EXPECT_TRUE(filer.MoveTo(QString::fromLatin1(path)));
        EXPECT_EQ(Id(), QStringLiteral("1.1"));
    }
    EXPECT_TRUE(filer.MoveTo(QStringLiteral("/")));
    EXPECT_EQ(filer.GetTag(), QStringLiteral("Root"));
}

TEST_F(XmlFilerOnADocument, APathThatIsNotFoundLeavesTheCurrentElement)
{
    ASSERT_TRUE(filer.MoveTo(QStringLiteral("A/B")));
    // The second A has a C, but only first children are followed.
    for (const char* path : {"X", "/Root/A/C", "/Root/A/X", "/Root/Root", "..", "b"}) {
        SCOPED_TRACE(path);
        EXPECT_FALSE(filer.MoveTo(QString::fromLatin1(path)));
        EXPECT_EQ(Id(), QStringLiteral("1.1"));
    }
}

TEST_F(XmlFilerOnADocument, AnEmptyPathSucceedsAndChangesNothing)
{
    ASSERT_TRUE(filer.MoveTo(QStringLiteral("A/B")));
    EXPECT_TRUE(filer.MoveTo({}));
    EXPECT_TRUE(filer.MoveTo(QStringLiteral(" \t ")));
    EXPECT_EQ(Id(), QStringLiteral("1.1"));
}

TEST_F(XmlFilerOnADocument, ChildrenAndSiblingsAreElementsOfAnyTag)
{
    EXPECT_TRUE(filer.MoveToFirstChild());
    EXPECT_EQ(Id(), QStringLiteral("1"));
    EXPECT_TRUE(filer.MoveToNextSibling());
    EXPECT_EQ(Id(), QStringLiteral("2"));
    EXPECT_FALSE(filer.MoveToNextSibling());
    EXPECT_EQ(Id(), QStringLiteral("2"));
    EXPECT_TRUE(filer.MoveToFirstChild());
    EXPECT_EQ(filer.GetTag(), QStringLiteral("C"));
    EXPECT_FALSE(filer.MoveToFirstChild());
}

TEST_F(XmlFilerOnADocument, AMissingAttributeAndAMissingElementGiveTheDefault)
{
    EXPECT_EQ(filer.GetAttribute(QStringLiteral("Name"), {}), QStringLiteral("the root"));
    EXPECT_EQ(Id(), QStringLiteral("none"));
    const XmlFiler unopened(XmlFiler::KeepTr);
    EXPECT_EQ(unopened.GetAttribute(QStringLiteral("Id"), QStringLiteral("none")),
              QStringLiteral("none"));
    EXPECT_EQ(unopened.GetPlainAttribute(QStringLiteral("Id"), QStringLiteral("none")),
              QStringLiteral("none"));
}

TEST(XmlFiler, TrIsUnwrappedOnlyWhereItOpensAndClosesTheValue)
{
    struct Row
    {
        const char* written;
        const char* read;
    };
    const Row rows[] = {
        {"tr(Foo.dll)", "Foo.dll"},
        {"  TR (Foo.dll)  ", "Foo.dll"},
        {"Tr(a(b))", "a(b)"},
        {"tr( blank )", " blank "},
        {"tr()", ""},
        {"tr(Foo.dll", "tr(Foo.dll"},
        {"Foo.dll)", "Foo.dll)"},
        {"xtr(Foo.dll)", "xtr(Foo.dll)"},
        {"tr(Foo).dll", "tr(Foo).dll"},
        {"plain", "plain"},
    };
    FileTree tree;
    for (const Row& row : rows) {
        SCOPED_TRACE(row.written);
        tree.File(QStringLiteral("x.xml"), QByteArray("<R V=\"") + row.written + "\"/>");
        XmlFiler unwrapping(XmlFiler::UnwrapTr);
        XmlFiler keeping(XmlFiler::KeepTr);
        ASSERT_TRUE(unwrapping.Open(tree.Path(QStringLiteral("x.xml"))));
        ASSERT_TRUE(keeping.Open(tree.Path(QStringLiteral("x.xml"))));
        const QString name = QStringLiteral("V");
        EXPECT_EQ(unwrapping.GetAttribute(name, {}), QString::fromLatin1(row.read));
        EXPECT_EQ(unwrapping.GetPlainAttribute(name, {}), QString::fromLatin1(row.written));
        EXPECT_EQ(keeping.GetAttribute(name, {}), QString::fromLatin1(row.written));
    }
}

TEST(XmlFiler, AFileThatIsMissingOrNotWellFormedDoesNotOpen)
{
    FileTree tree;
    tree.File(QStringLiteral("empty.xml"), {})
        .File(QStringLiteral("cut.xml"), "<SyncPlugins><Plugin>")
        .File(QStringLiteral("text.xml"), "no markup")
        .File(QStringLiteral("two.xml"), "<A/><B/>");
    for (const char* name : {"missing.xml", "empty.xml", "cut.xml", "text.xml", "two.xml"}) {
        SCOPED_TRACE(name);
        XmlFiler filer(XmlFiler::UnwrapTr);
        EXPECT_FALSE(filer.Open(tree.Path(QString::fromLatin1(name))));
        EXPECT_EQ(filer.GetOpenError(), QString());
        EXPECT_FALSE(filer.MoveTo(QStringLiteral("/SyncPlugins")));
    }
}

TEST(XmlFiler, AFileThatCannotBeOpenedSaysWhy)
{
    FileTree tree;
    const QString folder = tree.Folder(QStringLiteral("f.xml")).Path(QStringLiteral("f.xml"));
    QFile file(folder);
    ASSERT_FALSE(file.open(QIODevice::ReadOnly));

    XmlFiler filer(XmlFiler::UnwrapTr);
    EXPECT_FALSE(filer.Open(folder));
    EXPECT_EQ(filer.GetOpenError(),
              QStringLiteral("XmlFiler: Failed to open file %1. %2 (Error code: %3)")
                  .arg(folder, file.errorString())
                  .arg(int(file.error())));
}

} // namespace
