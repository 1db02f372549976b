// SPDX-License-Identifier: Apache-2.0

#include "TerminalInput.h"

#include "Descriptors.h"

namespace Halvern::Cli {

namespace {

/// How long a cancel may go unnoticed: the signal may have reached another thread.
constexpr int MillisecondsBetweenLooks = 100;

} // namespace

std::optional<QString> TerminalInput::ReadLine()
{
    while (!m_read.contains('\n')) {
        while (!m_cancel.IsCancelled() && !WaitForInput(StandardInput, MillisecondsBetweenLooks))
            continue;
        const QByteArray more = m_cancel.IsCancelled() ? QByteArray() : ReadSome(StandardInput);
        if (more.isEmpty())
            return std::nullopt;
        m_read += more;
    }
    const qsizetype end = m_read.indexOf('\n');
    const QString line = QString::fromLocal8Bit(m_read.left(end));
    m_read.remove(0, end + 1);
    return line;
}

} // namespace Halvern::Cli
