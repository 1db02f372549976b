// SPDX-License-Identifier: Apache-2.0

#include "plugins/XmlFiler.h"

#include "FileTree.h"

#include <QtCore/QDir>
#include <QtCore/QFile>

#include <gtest/gtest.h>

namespace {

using namespace Halvern::FileLink;
using namespace Halvern::Test;
using namespace Qt::StringLiterals;

class XmlFilerOnADocument : public ::testing::Test
{
protected:
    XmlFilerOnADocument()
    {
        tree.File(u"doc.xml"_s, "<?xml version=\"1.0\"?><!-- before -->\n"
                                "<Root Name=\"the root\">text<!-- c -->"
                                "<A Id=\"1\"><B Id=\"1.1\"/><B Id=\"1.2\"/></A><A Id=\"2\"><C/></A>"
                                "</Root>");
        opened = filer.Open(tree.Path(u"doc.xml"_s));
    }
    QString Id() const { return filer.GetAttribute(u"Id"_s, u"none"_s); }

    FileTree tree;
    XmlFiler filer{XmlFiler::KeepTr};
    bool opened = false;
};

TEST_F(XmlFilerOnADocument, OpenMakesTheRootElementCurrent)
{
    EXPECT_TRUE(opened);
    EXPECT_EQ(filer.GetTag(), u"Root"_s);
    EXPECT_EQ(filer.FileName(), tree.Path(u"doc.xml"_s));
}

TEST_F(XmlFilerOnADocument, ARelativePathIsWalkedFromTheCurrentElementToFirstMatches)
{
    EXPECT_TRUE(filer.MoveTo(u"A"_s));
    EXPECT_TRUE(filer.MoveTo(u"B"_s));
    EXPECT_EQ(Id(), u"1.1"_s);
}

TEST_F(XmlFilerOnADocument, AnAbsolutePathMayNameTheRootOrLeaveItOut)
{
    for (const char* path : {"/Root/A/B", "/A/B", "\\Root\\A\\B", "  //Root//A/B/ "}) {
        SCOPED_TRACE(path);
        EXPECT_TRUE(filer.MoveTo(QString::fromLatin1(path)));
        EXPECT_EQ(Id(), u"1.1"_s);
    }
    EXPECT_TRUE(filer.MoveTo(u"/"_s));
    EXPECT_EQ(filer.GetTag(), u"Root"_s);
}

TEST_F(XmlFilerOnADocument, APathThatIsNotFoundLeavesTheCurrentElement)
{
    ASSERT_TRUE(filer.MoveTo(u"A/B"_s));
    // The second A has a C, but only first children are followed.
    for (const char* path : {"X", "/Root/A/C", "/Root/A/X", "/Root/Root", "..", "b"}) {
        SCOPED_TRACE(path);
        EXPECT_FALSE(filer.MoveTo(QString::fromLatin1(path)));
        EXPECT_EQ(Id(), u"1.1"_s);
    }
}

TEST_F(XmlFilerOnADocument, AnEmptyPathSucceedsAndChangesNothing)
{
    ASSERT_TRUE(filer.MoveTo(u"A/B"_s));
    EXPECT_TRUE(filer.MoveTo({}));
    EXPECT_TRUE(filer.MoveTo(u" \t "_s));
    EXPECT_EQ(Id(), u"1.1"_s);
}

TEST_F(XmlFilerOnADocument, ChildrenAndSiblingsAreElementsOfAnyTag)
{
    EXPECT_TRUE(filer.MoveToFirstChild());
    EXPECT_EQ(Id(), u"1"_s);
    EXPECT_TRUE(filer.MoveToNextSibling());
    EXPECT_EQ(Id(), u"2"_s);
    EXPECT_FALSE(filer.MoveToNextSibling());
    EXPECT_EQ(Id(), u"2"_s);
    EXPECT_TRUE(filer.MoveToFirstChild());
    EXPECT_EQ(filer.GetTag(), u"C"_s);
    EXPECT_FALSE(filer.MoveToFirstChild());
}

TEST_F(XmlFilerOnADocument, AMissingAttributeAndAMissingElementGiveTheDefault)
{
    EXPECT_EQ(filer.GetAttribute(u"Name"_s, {}), u"the root"_s);
    EXPECT_EQ(Id(), u"none"_s);
    const XmlFiler unopened(XmlFiler::KeepTr);
    EXPECT_EQ(unopened.GetAttribute(u"Id"_s, u"none"_s), u"none"_s);
    EXPECT_EQ(unopened.GetPlainAttribute(u"Id"_s, u"none"_s), u"none"_s);
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
        tree.File(u"x.xml"_s, QByteArray("<R V=\"") + row.written + "\"/>");
        XmlFiler unwrapping(XmlFiler::UnwrapTr);
        XmlFiler keeping(XmlFiler::KeepTr);
        ASSERT_TRUE(unwrapping.Open(tree.Path(u"x.xml"_s)));
        ASSERT_TRUE(keeping.Open(tree.Path(u"x.xml"_s)));
        const QString name = u"V"_s;
        EXPECT_EQ(unwrapping.GetAttribute(name, {}), QString::fromLatin1(row.read));
        EXPECT_EQ(unwrapping.GetPlainAttribute(name, {}), QString::fromLatin1(row.written));
        EXPECT_EQ(keeping.GetAttribute(name, {}), QString::fromLatin1(row.written));
    }
}

TEST(XmlFiler, AFileThatIsMissingOrNotWellFormedDoesNotOpen)
{
    FileTree tree;
    tree.File(u"empty.xml"_s, {})
        .File(u"cut.xml"_s, "<SyncPlugins><Plugin>")
        .File(u"text.xml"_s, "no markup")
        .File(u"two.xml"_s, "<A/><B/>");
    for (const char* name : {"missing.xml", "empty.xml", "cut.xml", "text.xml", "two.xml"}) {
        SCOPED_TRACE(name);
        XmlFiler filer(XmlFiler::UnwrapTr);
        EXPECT_FALSE(filer.Open(tree.Path(QString::fromLatin1(name))));
        EXPECT_EQ(filer.GetOpenError(), QString());
        EXPECT_FALSE(filer.MoveTo(u"/SyncPlugins"_s));
    }
}

TEST(XmlFiler, AFileThatCannotBeOpenedSaysWhy)
{
    FileTree tree;
    const QString folder = tree.Folder(u"f.xml"_s).Path(u"f.xml"_s);
    QFile file(folder);
    ASSERT_FALSE(file.open(QIODevice::ReadOnly));

    XmlFiler filer(XmlFiler::UnwrapTr);
    EXPECT_FALSE(filer.Open(folder));
    EXPECT_EQ(filer.GetOpenError(), u"XmlFiler: Failed to open file %1. %2 (Error code: %3)"_s
                                        .arg(folder, file.errorString())
                                        .arg(int(file.error())));
}

} // namespace
