// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QProcess>

#include <sys/types.h>

namespace Halvern::Test {

/// A program that runs at a terminal of its own: a shell's line discipline, echo and Ctrl-C
/// included.
class PseudoTerminal
{
public:
    /// Where the program's standard output goes.
    enum class Output
    {
        Terminal,
        Nowhere,
    };

    /// Program, arguments, environment and folder are those of the process, which is not started.
    explicit PseudoTerminal(const QProcess& program, Output output = Output::Terminal);
    ~PseudoTerminal();
    PseudoTerminal(const PseudoTerminal&) = delete;
    PseudoTerminal& operator=(const PseudoTerminal&) = delete;

    void Type(const QByteArray& text);
    /// Reads until the text has come, which comes after what was waited for before; fails the test
    /// when it does not come.
    void WaitFor(const QByteArray& text);
    /// Reads to the end. The exit code; -1 when a signal ended the program.
    int Wait();
    /// All that was read, with "\n" at the ends of lines.
    QByteArray Screen() const;

private:
    bool ReadMore();

    pid_t m_child = -1;
    int m_terminal = -1;
    QByteArray m_screen;
    qsizetype m_seen = 0;
};

} // namespace Halvern::Test
