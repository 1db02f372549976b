// SPDX-License-Identifier: Apache-2.0

#include "ForeignOutput.h"

#include "Masking.h"

#include <QtCore/QStringDecoder>

#include <cstdio>
#include <exception>
#include <system_error>

namespace Halvern::Cli {

namespace {

/// After the end, only programs that were started can still hold the pipe open.
constexpr int MillisecondsBetweenLooks = 50;

/// Line ends as Windows has them are no control characters, also when they come in two pieces.
class LineEnds
{
public:
    QString Unified(const QString& piece)
    {
        QString text = m_held + piece;
        m_held = text.endsWith(u'\r') ? QStringLiteral("\r") : QString();
        text.chop(m_held.size());
        return text.replace(QStringLiteral("\r\n"), QStringLiteral("\n"));
    }

private:
    QString m_held;
};

} // namespace

ForeignOutput::ForeignOutput(int messages) : m_messages(messages)
{
    if (m_messages == NoDescriptor)
        RedirectToNothing(StandardOutput);
    else if (!IsTerminal(m_messages) || !BeginMasking())
        Redirect(StandardOutput, m_messages);
}

ForeignOutput::~ForeignOutput()
{
    // What the C library holds back belongs to what was printed.
    std::fflush(stdout);
    if (!m_forwarder.joinable())
        return;
    RedirectTo(m_messages);
    m_ending = true;
    m_forwarder.join();
    Close(m_readEnd);
}

/// False when the system has no pipe or no thread left; nothing has changed then.
bool ForeignOutput::BeginMasking()
{
    const Pipe pipe = MakePipe();
    if (pipe.readEnd == NoDescriptor)
        return false;
    m_readEnd = pipe.readEnd;
    try {
        m_forwarder = std::thread(&ForeignOutput::Forward, this);
    } catch (const std::system_error&) {
        Close(pipe.readEnd);
        Close(pipe.writeEnd);
        return false;
    }
    RedirectTo(pipe.writeEnd);
    Close(pipe.writeEnd);
    DelayAborts();
    return true;
}

void ForeignOutput::RedirectTo(int descriptor)
{
    Redirect(StandardOutput, descriptor);
    Redirect(StandardError, descriptor);
}

void ForeignOutput::Forward() noexcept
{
    LineEnds ends;
    QStringDecoder decode(QStringDecoder::Utf8);
    while (true) {
        if (!WaitForInput(m_readEnd, MillisecondsBetweenLooks)) {
            if (m_ending)
                return;
            continue;
        }
        const QByteArray bytes = ReadSome(m_readEnd);
        if (bytes.isEmpty())
            return;
        try {
            // A terminal that takes nothing any more is no reason to let the writer wait for ever.
            (void)WriteAll(m_messages, MaskedLines(ends.Unified(decode(bytes))).toUtf8());
        } catch (const std::exception&) {
            // For want of memory this piece is lost; the next one may fit.
            continue;
        }
    }
}

} // namespace Halvern::Cli
