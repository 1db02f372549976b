// SPDX-License-Identifier: Apache-2.0

#include "CommandFixture.h"
#include "PseudoTerminal_posix.h"

namespace Halvern::Test {

using namespace Qt::StringLiterals;

namespace {

/// The command at a terminal. Whatever it prints there is read as a terminal would get it.
class AtATerminal : public CommandFixture
{
protected:
    AtATerminal() { RegisterTestTalker(tree, u"plugins"_s); }

    using Output = PseudoTerminal::Output;

    std::unique_ptr<PseudoTerminal> Start(const QStringList& arguments,
                                          Output output = Output::Terminal) const
    {
        QProcess process;
        Prepare(process, arguments);
        return std::make_unique<PseudoTerminal>(process, output);
    }

    QStringList LinksArguments(const QStringList& files) const
    {
        return QStringList{u"links"_s,         u"--plugin-path"_s, tree.Path(u"plugins"_s),
                           u"--plugin-path"_s, TestPluginFolder(), u"--isolate"_s,
                           u"never"_s} +
               files;
    }

    /// Two files in the way of two others.
    void PutFilesInTheWay()
    {
        tree.File(u"work/a.tlk"_s, "new a\n")
            .File(u"work/b.tlk"_s, "new b\n")
            .File(u"cloud/a.tlk"_s, "old a\n")
            .File(u"cloud/b.tlk"_s, "old b\n");
    }

    QStringList AskingArguments() const
    {
        return ImportArguments({u"a.tlk"_s, u"b.tlk"_s, u"--on-conflict"_s, u"ask"_s});
    }
};

constexpr char Question[] = "[s]top?";

/// But for the sequence with which the progress line clears itself.
QByteArray WithoutProgress(QByteArray screen)
{
    return screen.replace("\r\033[K", "");
}

bool HasControls(const QByteArray& screen)
{
    const QString text = QString::fromUtf8(WithoutProgress(screen));
    return std::any_of(text.begin(), text.end(), [](QChar c) {
        return (c.category() == QChar::Other_Control && c != u'\n') || c == QChar(0x202e) ||
               c == QChar::LineSeparator;
    });
}

} // namespace

TEST_F(AtATerminal, NoNameOfAFileSteersIt)
{
    const QString name = u"evil\x1b]0;owned\x07\u009b2J\u202egpj\u2028.tlk"_s;
    const QString masked = u"evil\\x1b]0;owned\\x07\\x9b2J\\u202egpj\\u2028.tlk"_s;
    tree.File(u"work/"_s + name, "link 1 gone\x1b[2J.tlk\nfail\n")
        .File(u"work/top.tlk"_s, "link 1 "_ba + name.toUtf8() + "\nlink 2 gone\x1b[2J.tlk\n");
    const QList<QStringList> commands = {
        LinksArguments({u"top.tlk"_s, name}),
        LinksArguments({u"top.tlk"_s, name, u"--json"_s}),
        ImportArguments({u"top.tlk"_s, u"-vvv"_s}),
        ImportArguments({u"top.tlk"_s, u"--json"_s}),
        ImportArguments({name + u".not"_s}),
        ImportArguments({u"top.tlk"_s, u"--"_s + name}),
        {name},
        {u"plugins"_s, u"--plugin-path"_s, name},
    };
    for (const QStringList& arguments : commands) {
        const auto terminal = Start(arguments);
        terminal->Wait();
        EXPECT_FALSE(HasControls(terminal->Screen())) << terminal->Screen().toStdString();
        EXPECT_TRUE(arguments.contains(u"--json"_s) ||
                    QString::fromUtf8(terminal->Screen()).contains(masked))
            << terminal->Screen().toStdString();
    }
}

TEST_F(AtATerminal, NothingThatAPluginPrintsSteersIt)
{
    tree.File(u"work/a.talk"_s, "\x1b[31mred\u202e\nsystem printf 'child \\033[0m\\r\\n' >&2\n");
    for (const Output output : {Output::Terminal, Output::Nowhere}) {
        const auto terminal = Start(LinksArguments({u"a.talk"_s}), output);
        EXPECT_EQ(terminal->Wait(), 0);
        EXPECT_FALSE(HasControls(terminal->Screen())) << terminal->Screen().toStdString();
        for (const char* said :
             {"printf: \\x1b[31mred\\u202e\n", "cout: \\x1b[31mred\\u202e\n",
              "cerr: \\x1b[31mred\\u202e\n", "late: \\x1b[31mred\\u202e\n", "child \\x1b[0m\n"})
            EXPECT_TRUE(terminal->Screen().contains(said)) << terminal->Screen().toStdString();
    }
}

TEST_F(AtATerminal, APluginMayPrintMoreThanAPipeHoldsAndLeaveAProgramBehind)
{
    tree.File(u"work/a.talk"_s, QByteArray(300000, 'x') + "\nsystem sleep 20 &\n");
    const auto terminal = Start(LinksArguments({u"a.talk"_s}), Output::Nowhere);
    EXPECT_EQ(terminal->Wait(), 0);
    EXPECT_GE(terminal->Screen().count('x'), 4 * 300000);
}

TEST_F(AtATerminal, TheLastWordsOfAPluginThatAbortsAreShown)
{
    tree.File(u"work/a.talk"_s, "abort\n");
    const auto terminal = Start(LinksArguments({u"a.talk"_s}));
    EXPECT_EQ(terminal->Wait(), -1);
    EXPECT_TRUE(terminal->Screen().contains("assertion failed\n"))
        << terminal->Screen().toStdString();
}

TEST_F(AtATerminal, AConflictIsShownAndAskedAboutUntilTheAnswerMeansSomething)
{
    PutFilesInTheWay();
    const auto terminal = Start(AskingArguments());
    terminal->WaitFor("conflict   a.tlk -> a.tlk");
    terminal->WaitFor("source");
    terminal->WaitFor("copy");
    terminal->WaitFor(Question);
    terminal->Type("what\n");
    terminal->WaitFor(Question);
    terminal->Type("k\n");
    terminal->WaitFor("conflict   b.tlk -> b.tlk");
    terminal->WaitFor(Question);
    terminal->Type("s\n");
    EXPECT_EQ(terminal->Wait(), 6);
    EXPECT_EQ(Cloud(), (FileTree::Snapshot{{u"a.tlk"_s, "old a\n"}, {u"b.tlk"_s, "old b\n"}}));
}

TEST_F(AtATerminal, EachConflictIsSettledAsAnswered)
{
    PutFilesInTheWay();
    tree.File(u"work/c.tlk"_s, "new c\n").File(u"cloud/c.tlk"_s, "old c\n");
    const auto terminal = Start(AskingArguments() + QStringList{u"c.tlk"_s});
    for (const char* answer : {"keep\n", "r\n", "N\n"}) {
        terminal->WaitFor(Question);
        terminal->Type(answer);
    }
    EXPECT_EQ(terminal->Wait(), 0) << terminal->Screen().toStdString();
    EXPECT_EQ(Cloud(), (FileTree::Snapshot{{u"a.tlk"_s, "old a\n"},
                                           {u"b.tlk"_s, "new b\n"},
                                           {u"c.tlk"_s, "old c\n"},
                                           {u"c (2).tlk"_s, "new c\n"}}));
}

TEST_F(AtATerminal, AFileThatChangedOnBothSidesIsShownThenAndNow)
{
    tree.File(u"work/a.tlk"_s, "first\n");
    ASSERT_EQ(Import({u"a.tlk"_s}).exitCode, 0);
    tree.File(u"work/a.tlk"_s, "new source\n").File(u"cloud/a.tlk"_s, "my copy\n");
    const auto terminal = Start(ImportArguments({u"a.tlk"_s, u"--on-conflict"_s, u"ask"_s}));
    terminal->WaitFor("both changed since the copy was made");
    terminal->WaitFor("source  11 bytes");
    terminal->WaitFor("when it was copied: 6 bytes");
    terminal->WaitFor("copy    8 bytes");
    terminal->WaitFor("when it was copied: 6 bytes");
    terminal->Type("r all\n");
    EXPECT_EQ(terminal->Wait(), 0) << terminal->Screen().toStdString();
    EXPECT_EQ(tree.Read(u"cloud/a.tlk"_s), "new source\n");
}

TEST_F(AtATerminal, TheEndOfTheInputStops)
{
    PutFilesInTheWay();
    const auto terminal = Start(AskingArguments());
    terminal->WaitFor(Question);
    terminal->Type("\x04");
    EXPECT_EQ(terminal->Wait(), 6);
    EXPECT_TRUE(terminal->Screen().contains("nothing was copied"));
}

TEST_F(AtATerminal, CtrlCAtAQuestionCancels)
{
    PutFilesInTheWay();
    const auto terminal = Start(AskingArguments());
    terminal->WaitFor(Question);
    terminal->Type("\x03");
    EXPECT_EQ(terminal->Wait(), 20);
    EXPECT_TRUE(terminal->Screen().contains("cancelled; nothing was copied"))
        << terminal->Screen().toStdString();
    EXPECT_EQ(Cloud(), (FileTree::Snapshot{{u"a.tlk"_s, "old a\n"}, {u"b.tlk"_s, "old b\n"}}));
}

TEST_F(AtATerminal, QuestionsComeThoughResultsGoElsewhere)
{
    PutFilesInTheWay();
    const auto terminal = Start(AskingArguments() + QStringList{u"--json"_s}, Output::Nowhere);
    terminal->WaitFor(Question);
    terminal->Type("S\n");
    EXPECT_EQ(terminal->Wait(), 6);
}

TEST_F(AtATerminal, WithoutOneNothingIsAsked)
{
    PutFilesInTheWay();
    const CommandResult result = Run(AskingArguments());
    EXPECT_EQ(result.exitCode, 2);
    EXPECT_EQ(result.err, u"corsync: --on-conflict ask needs a terminal as standard input and "
                          "standard error; choose stop, keep, replace or rename\n"_s);
    EXPECT_FALSE(tree.Exists(u"sync.db"_s));
}

} // namespace Halvern::Test
