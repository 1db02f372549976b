// SPDX-License-Identifier: Apache-2.0

#include "PseudoTerminal_posix.h"

#include <QtCore/QFile>
#include <QtCore/QProcessEnvironment>

#include <gtest/gtest.h>

#include <csignal>
#include <vector>

#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <sys/wait.h>
#include <unistd.h>

namespace Halvern::Test {

namespace {

constexpr int PatienceInMilliseconds = 60000;
constexpr int CannotStart = 127;

QList<QByteArray> Encoded(const QStringList& texts)
{
    QList<QByteArray> encoded;
    for (const QString& text : texts)
        encoded.append(QFile::encodeName(text));
    return encoded;
}

std::vector<char*> Pointers(QList<QByteArray>& texts)
{
    std::vector<char*> pointers;
    for (QByteArray& text : texts)
        pointers.push_back(text.data());
    pointers.push_back(nullptr);
    return pointers;
}

} // namespace

PseudoTerminal::PseudoTerminal(const QProcess& program, Output output)
{
    // All memory is taken before the fork.
    QList<QByteArray> arguments = Encoded(QStringList{program.program()} + program.arguments());
    QList<QByteArray> environment = Encoded(program.processEnvironment().toStringList());
    const std::vector<char*> argv = Pointers(arguments);
    const std::vector<char*> envp = Pointers(environment);
    const QByteArray folder = QFile::encodeName(program.workingDirectory());
    winsize size = {};
    size.ws_row = 50;
    size.ws_col = 400;
    m_child = forkpty(&m_terminal, nullptr, nullptr, &size);
    if (m_child != 0)
        return;
    if (output == Output::Nowhere)
        dup2(open("/dev/null", O_WRONLY), STDOUT_FILENO);
    if (chdir(folder.constData()) == 0)
        execve(argv[0], argv.data(), envp.data());
    _exit(CannotStart);
}

PseudoTerminal::~PseudoTerminal()
{
    if (m_child > 0) {
        kill(m_child, SIGKILL);
        waitpid(m_child, nullptr, 0);
    }
    close(m_terminal);
}

void PseudoTerminal::Type(const QByteArray& text)
{
    EXPECT_EQ(write(m_terminal, text.constData(), size_t(text.size())), text.size());
}

void PseudoTerminal::WaitFor(const QByteArray& text)
{
    qsizetype at = -1;
    while ((at = m_screen.indexOf(text, m_seen)) < 0 && ReadMore())
        continue;
    EXPECT_GE(at, 0) << "no \"" << text.toStdString() << "\" in\n" << m_screen.toStdString();
    m_seen = at < 0 ? m_screen.size() : at + text.size();
}

int PseudoTerminal::Wait()
{
    while (ReadMore())
        continue;
    int status = 0;
    EXPECT_EQ(waitpid(m_child, &status, 0), m_child);
    m_child = -1;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

QByteArray PseudoTerminal::Screen() const
{
    return QByteArray(m_screen).replace("\r\n", "\n");
}

/// False at the end: the program closed its terminal, or says nothing any more.
bool PseudoTerminal::ReadMore()
{
    pollfd waited = {m_terminal, POLLIN, 0};
    if (poll(&waited, 1, PatienceInMilliseconds) <= 0) {
        ADD_FAILURE() << "nothing more after\n" << m_screen.toStdString();
        kill(m_child, SIGKILL);
        return false;
    }
    char buffer[4096];
    const ssize_t count = read(m_terminal, buffer, sizeof buffer);
    if (count > 0)
        m_screen.append(buffer, qsizetype(count));
    return count > 0;
}

} // namespace Halvern::Test
