// SPDX-License-Identifier: Apache-2.0

#include "isolation/HostProcess.h"

#include "isolation/Platform.h"

#include <QtCore/QFileInfo>
#include <QtCore/QStringList>

#include <algorithm>
#include <utility>

namespace Halvern::Isolation {

namespace {

/// Starting a program under load takes its time; a plug-in's library may be large.
constexpr int MillisecondsToStart = 60'000;
constexpr int MillisecondsToEnd = 2'000;
/// A plug-in that hangs at each file would cost the limit for each.
constexpr int MaxTimeouts = 3;
/// A line without an end is cut here.
constexpr qsizetype LongestLine = 4096;
/// What is printed waits in memory from one look to the next, and so does somebody who cancels.
constexpr int MillisecondsBetweenLooks = 30;
/// More than these of one call are a mistake that would fill the log.
constexpr int MostLines = 1000;

CallWatch* watch = nullptr;

/// What a process takes may be short for a moment only.
bool Starts(QProcess& process)
{
    constexpr int tries = 2;
    for (int i = 0; i < tries; ++i) {
        process.start();
        if (process.waitForStarted(MillisecondsToStart))
            return true;
        if (process.error() != QProcess::FailedToStart)
            return false;
    }
    return false;
}

} // namespace

HostProcess::HostProcess(Description description) : m_description(std::move(description)) {}

HostProcess::~HostProcess()
{
    if (!m_process)
        return;
    // There is nothing that it would have to save.
    m_process->kill();
    m_process->waitForFinished(MillisecondsToEnd);
}

void HostProcess::SetWatch(CallWatch* goesOn)
{
    watch = goesOn;
}

Readiness HostProcess::Start(const Log& log)
{
    if (m_process && m_process->state() == QProcess::Running)
        return m_ready;
    if (m_timeouts >= MaxTimeouts)
        throw HostFailure(
            QStringLiteral("took too long %1 times and is not asked again").arg(m_timeouts));
    m_process = std::make_unique<QProcess>();
    m_process->setReadChannel(QProcess::StandardOutput);
    // The folder that the caller works in must not be held by a process that ends after it.
    m_process->setWorkingDirectory(QFileInfo(m_description.program).path());
    m_process->setProgram(m_description.program);
    m_process->setArguments({m_description.library, NameOf(m_description.service),
                             QString::number(m_description.memoryLimit)});
    if (!Starts(*m_process)) {
        const QString reason = m_process->errorString();
        m_process.reset();
        throw HostFailure(QStringLiteral("could not be given a process of its own: %1: %2")
                              .arg(m_description.program, reason));
    }
    m_deadline.setRemainingTime(MillisecondsToStart);
    MessageReader ready = WaitFor(Message::Ready, log, {});
    m_ready.outcome = ready.Take<Outcome>();
    m_ready.text = ready.Take<QString>();
    m_ready.contractStamp = ready.Take<quint64>();
    return m_ready;
}

MessageReader HostProcess::Call(const QByteArray& request, const Log& log, const Answer& answer)
{
    (void)Start(log);
    m_lines = 0;
    if (m_description.timeLimit > 0)
        m_deadline.setRemainingTime(qint64(m_description.timeLimit) * 1000);
    else
        m_deadline = QDeadlineTimer(QDeadlineTimer::Forever);
    Send(request);
    MessageReader done = WaitFor(Message::Done, log, answer);
    m_timeouts = 0;
    return done;
}

MessageReader HostProcess::WaitFor(Message kind, const Log& log, const Answer& answer)
{
    while (true) {
        Check();
        MessageReader message(ReadMessage(log));
        if (message.Kind() == kind && message.IsGood())
            return message;
        if (message.Kind() == Message::Log) {
            const auto severity = message.Take<LogSeverity>();
            log(severity, message.Take<QString>());
        } else if (message.Kind() == Message::MappingCall && answer) {
            Send(answer(message));
        } else {
            Fail(QStringLiteral("said what cannot be understood"));
        }
    }
}

QByteArray HostProcess::ReadMessage(const Log& log)
{
    char length[LengthSize];
    ReadBytes(length, LengthSize, log);
    const std::uint32_t size = LengthOf(length);
    if (size == 0 || size > MaxMessage)
        Fail(QStringLiteral("said what cannot be understood"));
    // Grown as it comes: the length alone is no reason to take memory.
    QByteArray message;
    while (message.size() < qsizetype(size)) {
        const qsizetype at = message.size();
        const qsizetype piece = std::min<qsizetype>(qsizetype(size) - at, qsizetype(1) << 20);
        message.resize(at + piece);
        ReadBytes(message.data() + at, piece, log);
    }
    return message;
}

void HostProcess::ReadBytes(char* bytes, qint64 size, const Log& log)
{
    while (size > 0) {
        const qint64 got = m_process->read(bytes, size);
        ForwardOutput(log);
        if (got < 0)
            Fail(WhyEnded());
        bytes += got;
        size -= got;
        if (size == 0 || m_process->bytesAvailable() > 0)
            continue;
        if (m_process->waitForReadyRead(MillisecondsBetweenLooks))
            continue;
        if (m_process->state() == QProcess::Running)
            Check();
        else if (m_process->bytesAvailable() == 0) {
            ForwardOutput(log);
            Fail(WhyEnded());
        }
    }
}

void HostProcess::Check()
{
    if (watch && !watch())
        Fail(QStringLiteral("was ended, because the job is cancelled"));
    if (!m_deadline.hasExpired())
        return;
    ++m_timeouts;
    Fail(QStringLiteral("took longer than the %1 seconds that it may take and was ended")
             .arg(m_description.timeLimit));
}

void HostProcess::Send(const QByteArray& message)
{
    m_process->write(message);
    while (m_process->bytesToWrite() > 0) {
        if (m_process->waitForBytesWritten(MillisecondsBetweenLooks))
            continue;
        if (m_process->state() != QProcess::Running)
            Fail(WhyEnded());
        Check();
    }
}

void HostProcess::ForwardOutput(const Log& log)
{
    m_printed += m_process->readAllStandardError();
    qsizetype at = 0;
    while (at < m_printed.size()) {
        qsizetype end = m_printed.indexOf('\n', at);
        const bool mayGoOn =
            m_printed.size() - at < LongestLine && m_process->state() == QProcess::Running;
        if (end < 0 && mayGoOn)
            break;
        if (end < 0 || end - at > LongestLine)
            end = std::min(at + LongestLine, m_printed.size());
        const QString line = QString::fromUtf8(m_printed.sliced(at, end - at)).trimmed();
        at = end < m_printed.size() && m_printed.at(end) == '\n' ? end + 1 : end;
        if (!line.isEmpty())
            LogPrinted(line, log);
    }
    m_printed.remove(0, at);
}

void HostProcess::LogPrinted(const QString& line, const Log& log)
{
    if (++m_lines < MostLines)
        log(LogSeverity::Info, QStringLiteral("printed: ") + line);
    else if (m_lines == MostLines)
        log(LogSeverity::Warn,
            QStringLiteral("printed more than %1 lines for one file; the rest is not shown")
                .arg(MostLines));
}

void HostProcess::Fail(const QString& what)
{
    m_process->kill();
    m_process->waitForFinished(MillisecondsToEnd);
    m_process.reset();
    m_printed.clear();
    throw HostFailure(what);
}

QString HostProcess::WhyEnded()
{
    m_process->waitForFinished(MillisecondsToEnd);
    const int code = m_process->exitCode();
    if (m_process->exitStatus() == QProcess::CrashExit)
        return QStringLiteral("crashed (%1)").arg(EndingText(code));
    return QStringLiteral("ended its process with exit code %1").arg(code);
}

} // namespace Halvern::Isolation
