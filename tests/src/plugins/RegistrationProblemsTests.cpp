// SPDX-License-Identifier: Apache-2.0

// What registration files say that does not do what their authors mean. What is done with them is
// tested by RegistrationFileTests.cpp and RegistrationWalkTests.cpp.

#include "PluginsFixture.h"

#include <gtest/gtest.h>

namespace {

using namespace Halvern::FileLink;
using namespace Halvern::Test;
using namespace Qt::StringLiterals;

QByteArray InContainer(const QByteArray& elements)
{
    return "<SyncPlugins>" + elements + "</SyncPlugins>";
}

QByteArray WithTypes(const QByteArray& types, const QByteArray& service = "FileLinkResolver")
{
    return InContainer("<P Module=\"a.so\"><" + service + " FileTypes=\"" + types + "\"/></P>");
}

QByteArray WithContent(const QByteArray& content)
{
    return InContainer("<P Module=\"a.so\">" + content + "</P>");
}

class RegistrationProblems : public PluginsFixture
{
protected:
    /// The problems of a file with this text, each as "module: text", in a manager of its own. All
    /// are about the file, and nothing of them is logged.
    QStringList ProblemsOf(const QByteArray& text)
    {
        PluginManager fresh;
        const QString file = u"one.syncplugin"_s;
        tree.File(file, text);
        log.Clear();
        const bool isLoaded = fresh.LoadRegistrationFile(tree.Path(file));
        EXPECT_TRUE(isLoaded || !fresh.RegistrationProblems().isEmpty()) << "without a reason";
        EXPECT_EQ(log.Lines(), QStringList());
        return Texts(fresh.RegistrationProblems(), tree.Path(file));
    }
    static QStringList Texts(const QList<Problem>& problems, const QString& file)
    {
        QStringList texts;
        for (const Problem& problem : problems) {
            EXPECT_EQ(problem.stage, Stage::Plugins);
            EXPECT_EQ(problem.kind, ProblemKind::Registration);
            EXPECT_EQ(problem.file, file);
            texts.append(u"%1: %2"_s.arg(problem.plugin, problem.text));
        }
        return texts;
    }
    static QStringList List(std::initializer_list<const char*> texts)
    {
        QStringList list;
        for (const char* text : texts)
            list.append(QString::fromUtf8(text));
        return list;
    }
    struct Row
    {
        const char* name;
        QByteArray text;
        QStringList problems;
    };
    void Expect(std::initializer_list<Row> rows)
    {
        for (const Row& row : rows)
            EXPECT_EQ(ProblemsOf(row.text), row.problems) << row.name;
    }
};

TEST_F(RegistrationProblems, AreNoneInAFileThatDoesWhatItSays)
{
    Expect({
        {"plain", WithTypes("prt,asm"), {}},
        {"dots in front", WithTypes(".prt,.asm"), {}},
        {"upper case", WithTypes("PRT,Asm"), {}},
        {"stray commas", WithTypes(",prt,,asm,"), {}},
        {"unusual extensions", WithTypes("c++,7z,kicad_pro,x-b"), {}},
        {"every type", WithTypes("*"), {}},
        {"texts in tr()",
         InContainer("<P Module=\"tr(a.so)\"><FileLayout FileTypes=\"tr(a,b)\"/>"
                     "</P>"),
         {}},
        {"numbers",
         InContainer("<P Module=\"a.so\" ContractVersion=\"1\"><FileLayout "
                     "FileTypes=\"a\" Priority=\"4294967295\"/></P>"),
         {}},
        {"empty numbers",
         InContainer("<P Module=\"a.so\" ContractVersion=\"\"><FileLayout "
                     "FileTypes=\"a\" Priority=\"\"/></P>"),
         {}},
        {"a container in a root",
         "<Product Name=\"x\"><Other Module=\"b.so\"/>" + WithTypes("a") + "</Product>",
         {}},
        {"unknown elements and attributes",
         InContainer("<P Module=\"a.so\" Vendor=\"x\"><Help Url=\"x\"/><FileLayout FileTypes=\"a\" "
                     "Hint=\"x\"/><More/></P><Info Url=\"y\"/>"),
         {}},
        {"a group that is read",
         InContainer("<A/><Group>" + QByteArray("<P Module=\"a.so\">"
                                                "<FileLayout FileTypes=\"a\"/></P></Group>")),
         {}},
    });
}

TEST_F(RegistrationProblems, TellOfTypesThatNoFileHas)
{
    const auto no = [](const char* type, const char* advice) {
        return u"a.so: FileTypes: no file has the type \"%1\", %2"_s.arg(QString::fromUtf8(type),
                                                                         QString::fromUtf8(advice));
    };
    const char blanks[] = "separate types by a comma, without blanks";
    const char comma[] = "separate types by a comma";
    const char pattern[] = "write the extension alone, without a pattern";
    const char dot[] = "write what follows the last dot of a file name";
    const char only[] = "write extensions only";
    Expect({
        {"a blank after a comma", WithTypes("obj, mtl"), {no(" mtl", blanks)}},
        {"a blank and a dot", WithTypes(".obj, .mtl"), {no(" .mtl", blanks)}},
        {"a blank instead", WithTypes("obj mtl"), {no("obj mtl", blanks)}},
        {"a blank at the end", WithTypes("obj,mtl "), {no("mtl ", blanks)}},
        {"a line break", WithTypes("obj,&#10;mtl"), {no("\nmtl", blanks)}},
        {"a semicolon", WithTypes("prt;asm"), {no("prt;asm", comma)}},
        {"a bar", WithTypes("prt|asm"), {no("prt|asm", comma)}},
        {"patterns", WithTypes("*.obj,*.mtl"), {no("*.obj", pattern), no("*.mtl", pattern)}},
        {"a placeholder", WithTypes("ob?"), {no("ob?", pattern)}},
        {"two dots", WithTypes("tar.gz,x"), {no("tar.gz", dot)}},
        {"a path", WithTypes("a/obj"), {no("a/obj", only)}},
        {"half a tr()", WithTypes("tr(obj"), {no("tr(obj", only)}},
        {"one good, one bad", WithTypes("obj,m tl"), {no("m tl", blanks)}},
    });
}

TEST_F(RegistrationProblems, TellOfListsThatDoNotMeanWhatTheySay)
{
    Expect({
        {"commas only", WithTypes(","), List({"a.so: FileTypes: \",\" names no type"})},
        {"a dot only", WithTypes("."), List({"a.so: FileTypes: \".\" names no type"})},
        {"named twice", WithTypes("obj,mtl,OBJ,.obj"),
         List({"a.so: FileTypes: \"OBJ\" is named twice"})},
        {"more than everything", WithTypes("*,obj"),
         List({"a.so: FileTypes: with \"*\" the resolver is the last resort for every type, those "
               "named beside it too"})},
        {"every type of a layout", WithTypes("*", "FileLayout"),
         List({"a.so: FileTypes: \"*\" means every type in a FileLinkResolver only, a FileLayout "
               "has to name its types"})},
        {"some types and all of a layout", WithTypes("*,obj", "FileLayout"),
         List({"a.so: FileTypes: \"*\" means every type in a FileLinkResolver only, a FileLayout "
               "has to name its types"})},
        {"empty", WithTypes(""), List({"a.so: <FileLinkResolver> names no FileTypes"})},
        {"missing", WithContent("<FileLayout/>"), List({"a.so: <FileLayout> names no FileTypes"})},
    });
}

TEST_F(RegistrationProblems, TellOfServicesThatAreNotUsed)
{
    Expect({
        {"both", WithContent("<FileLinkResolver FileTypes=\"r\"/><FileLayout FileTypes=\"l\"/>"),
         List({"a.so: <FileLinkResolver> is not used: a declaration offers one service, and it "
               "holds a <FileLayout>"})},
        {"both, one without types", WithContent("<FileLayout/><FileLinkResolver FileTypes=\"r\"/>"),
         List({"a.so: <FileLayout> names no FileTypes",
               "a.so: <FileLinkResolver> is not used: a declaration offers one service, and it "
               "holds a <FileLayout>"})},
        {"the same twice",
         WithContent("<FileLinkResolver FileTypes=\"a\"/><FileLinkResolver FileTypes=\"b\"/>"),
         List({"a.so: Only the first <FileLinkResolver> is read"})},
        {"an unknown one", WithContent("<FileLinkResolvers FileTypes=\"a\"/>"),
         List({"a.so: <P> offers no service: it holds neither a <FileLayout> nor a "
               "<FileLinkResolver>"})},
        {"none", WithContent({}),
         List({"a.so: <P> offers no service: it holds neither a <FileLayout> nor a "
               "<FileLinkResolver>"})},
        {"one in the wrong place",
         WithContent("<Services><FileLayout FileTypes=\"a\"/></Services>"),
         List({"a.so: <P> offers no service: it holds neither a <FileLayout> nor a "
               "<FileLinkResolver>"})},
    });
}

TEST_F(RegistrationProblems, TellOfPluginsThatAreNotTheFirstOfTheirFile)
{
    const QByteArray first = "<P Module=\"a.so\"><FileLayout FileTypes=\"a\"/></P>";
    const QByteArray second = "<Q Module=\"b.so\"><FileLayout FileTypes=\"b\"/></Q>";
    const char unused[] = "The plug-in is not used: of <SyncPlugins> only the first element is "
                          "read, which is %1; give each plug-in a file of its own";
    const auto line = [&](const char* module, const char* element) {
        return QString::fromUtf8(module) +
               QString::fromUtf8(unused).arg(QString::fromUtf8(element));
    };
    Expect({
        {"two", InContainer(first + second), {line("b.so: ", "<P>")}},
        {"three",
         InContainer(first + second + "<R Module=\"c.so\"/>"),
         {line("b.so: ", "<P>"), line("c.so: ", "<P>")}},
        {"the same library",
         InContainer(first + "<Q Module=\"a.so\"><FileLinkResolver "
                             "FileTypes=\"b\"/></Q>"),
         {line("a.so: ", "<P>")}},
        {"something else first", InContainer("<Info/>" + second), {line("b.so: ", "<Info>")}},
        {"two containers", "<Product>" + InContainer(first) + InContainer(second) + "</Product>",
         List({": Only the first <SyncPlugins> is read"})},
    });
}

TEST_F(RegistrationProblems, TellOfModulesAndNumbersThatAreNone)
{
    const QByteArray service = "<FileLayout FileTypes=\"x\"/>";
    const auto module = [&](const QByteArray& name) {
        return InContainer("<P Module=\"" + name + "\">" + service + "</P>");
    };
    Expect({
        {"no Module", InContainer("<P Name=\"A\">" + service + "</P>"),
         List({": <P> names no Module"})},
        {"an empty Module", module(""), List({": <P> names no Module"})},
        {"a path", module("sub/a.so"),
         List({"sub/a.so: Module \"sub/a.so\" is a path: write the library's file name alone"})},
        {"a path of Windows", module("sub\\a.dll"),
         List({"sub\\a.dll: Module \"sub\\a.dll\" is a path: write the library's file name "
               "alone"})},
        {"a blank", module("a.so "),
         List({"a.so : Module \"a.so \" begins or ends with a blank, which counts as part of the "
               "name"})},
        {"a priority in words", WithContent("<FileLayout FileTypes=\"x\" Priority=\"high\"/>"),
         List({"a.so: Priority \"high\" is no number from 0 to 4294967295, 0 is taken"})},
        {"a negative priority", WithContent("<FileLayout FileTypes=\"x\" Priority=\"-1\"/>"),
         List({"a.so: Priority \"-1\" is no number from 0 to 4294967295, 0 is taken"})},
    });
}

TEST_F(RegistrationProblems, TellOfAttributesThatAreNotReadWhereTheyStand)
{
    const char service[] = "the service's element";
    const char plugin[] = "the plug-in's element";
    const auto line = [](const char* written, const char* element, const char* known,
                         const char* place) {
        return u"a.so: \"%1\" in %2 is not read: write %3, in %4"_s.arg(
            QString::fromUtf8(written), QString::fromUtf8(element), QString::fromUtf8(known),
            QString::fromUtf8(place));
    };
    Expect({
        {"types of the plug-in",
         InContainer("<P Module=\"a.so\" FileTypes=\"x\"><FileLayout/></P>"),
         {line("FileTypes", "<P>", "FileTypes", service),
          u"a.so: <FileLayout> names no FileTypes"_s}},
        {"a priority of the plug-in",
         InContainer("<P Module=\"a.so\" Priority=\"1\"><FileLayout FileTypes=\"x\"/></P>"),
         {line("Priority", "<P>", "Priority", service)}},
        {"a version of the service",
         WithContent("<FileLayout FileTypes=\"x\" ContractVersion=\"2\"/>"),
         {line("ContractVersion", "<FileLayout>", "ContractVersion", plugin)}},
        {"a small letter",
         WithContent("<FileLayout fileTypes=\"x\"/>"),
         {u"a.so: <FileLayout> names no FileTypes"_s,
          line("fileTypes", "<FileLayout>", "FileTypes", service)}},
        {"a small module", InContainer("<P module=\"a.so\"><FileLayout FileTypes=\"x\"/></P>"),
         List({": \"module\" in <P> is not read: write Module, in the plug-in's element",
               ": <P> names no Module"})},
        {"a version of the container",
         "<SyncPlugins ContractVersion=\"2\"><P Module=\"a.so\"><FileLayout FileTypes=\"x\"/></P>"
         "</SyncPlugins>",
         List({": \"ContractVersion\" in <SyncPlugins> is not read: write ContractVersion, in the "
               "plug-in's element"})},
    });
}

TEST_F(RegistrationProblems, TellOfFilesThatDeclareNothing)
{
    Expect({
        {"another root", "<syncplugins/>",
         List({": The file holds no <SyncPlugins>, as its root element or directly in it"})},
        {"a container too deep", "<A><B><SyncPlugins/></B></A>",
         List({": The file holds no <SyncPlugins>, as its root element or directly in it"})},
        {"an empty container", "<SyncPlugins/>", List({": <SyncPlugins> declares no plug-in"})},
    });
}

TEST_F(RegistrationProblems, TellWhereAFileIsNoXml)
{
    for (const QByteArray text : {"", "Module=a.so", "<SyncPlugins>\n <P Module=\"a.so\">\n"}) {
        const QStringList problems = ProblemsOf(text);
        ASSERT_EQ(problems.size(), 1) << text.constData();
        EXPECT_TRUE(problems.first().startsWith(u": The file is no XML: "_s))
            << problems.first().toStdString();
    }
    EXPECT_TRUE(ProblemsOf("<SyncPlugins>\n <P></Q>\n</SyncPlugins>")
                    .first()
                    .contains(u"(line 2, column "_s));
}

TEST_F(RegistrationProblems, TellOfALibraryThatASecondFileRegistersOtherwise)
{
    const auto write = [&](const char* folder, const char* module, const char* content) {
        const QString file = QString::fromUtf8(folder) + u"/a.syncplugin"_s;
        tree.File(file,
                  InContainer(QByteArray("<P Module=\"") + module + "\">" + content + "</P>"));
        EXPECT_TRUE(manager.LoadRegistrationFile(tree.Path(file)));
        return tree.Path(file);
    };
    const QString first = write("1", "a.so", "<FileLinkResolver FileTypes=\"x,y\"/>");
    write("2", "a.so", "<FileLinkResolver FileTypes=\".x,.y\"/>");
    EXPECT_EQ(manager.RegistrationProblems().size(), 0) << "the same content";

    const char* const others[][2] = {
        {"A.SO", "<FileLinkResolver FileTypes=\"x,y\"/>"},
        {"a.so", "<FileLinkResolver FileTypes=\"x\"/>"},
        {"a.so", "<FileLinkResolver FileTypes=\"x,y\" Priority=\"1\"/>"},
        {"a.so", "<FileLayout FileTypes=\"x,y\"/>"},
        {"a.so\" Name=\"other", "<FileLinkResolver FileTypes=\"x,y\"/>"},
        {"a.so\" ContractVersion=\"1", "<FileLinkResolver FileTypes=\"x,y\"/>"},
    };
    int number = 0;
    for (const auto& [module, content] : others) {
        SCOPED_TRACE(content);
        const QString file = write("3", module, content);
        ASSERT_EQ(manager.RegistrationProblems().size(), ++number);
        EXPECT_EQ(Texts({manager.RegistrationProblems().last()}, file),
                  QStringList{u"a.so: The file is not used: %1 registers this library "
                              "already, otherwise"_s.arg(first)});
    }
    EXPECT_EQ(manager.Plugins().size(), 1);
}

TEST_F(RegistrationProblems, TellOfResolversOfOneFolderThatShareTypes)
{
    const auto write = [&](const char* name, const char* service, const char* types) {
        const QString file = QString::fromUtf8(name) + u".syncplugin"_s;
        const QString module = QFileInfo(QString::fromUtf8(name)).fileName();
        tree.File(file, Registration(module, QString::fromUtf8(service), QString::fromUtf8(types)));
        EXPECT_TRUE(manager.LoadRegistrationFile(tree.Path(file)));
        return tree.Path(file);
    };
    write("1/first", "FileLinkResolver", "x,y,z");
    write("1/layout", "FileLayout", "x,y");
    write("1/layout2", "FileLayout", "x,y");
    write("1/distinct", "FileLinkResolver", "v,w");
    write("2/elsewhere", "FileLinkResolver", "x,y");
    EXPECT_EQ(manager.RegistrationProblems().size(), 0);

    const QString second = write("1/second", "FileLinkResolver", "Z,a,X");
    EXPECT_EQ(Texts(manager.RegistrationProblems(), second),
              List({"second: first of the same folder is registered for \"Z,X\", too: which of the "
                    "two resolvers is asked depends on the order of the folder"}));
}

} // namespace
