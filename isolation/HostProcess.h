// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "isolation/CallWatch.h"
#include "isolation/Description.h"
#include "isolation/Messages.h"

#include <QtCore/QDeadlineTimer>
#include <QtCore/QProcess>
#include <QtCore/QString>

#include <functional>
#include <memory>
#include <stdexcept>

namespace Halvern::Isolation {

/// The host could not be started, ended by itself, took too long or said what cannot be right. The
/// text is a part of a sentence: "was ended by signal 11".
class HostFailure : public std::runtime_error
{
public:
    explicit HostFailure(const QString& what) : std::runtime_error(what.toStdString()), m_text(what)
    {}
    const QString& Text() const { return m_text; }

private:
    QString m_text;
};

/// What a host says about its plug-in when it has started.
struct Readiness
{
    Outcome outcome = Outcome::Unusable;
    QString text;
    /// What the library was built with.
    std::uint64_t contractStamp = 0;
};

/// The process that runs one plug-in: started on first use, again after it failed. Used from one
/// thread, that of the session.
class HostProcess
{
public:
    /// Called with each line for the log, of the plug-in or of the process.
    using Log = std::function<void(LogSeverity, const QString&)>;

    explicit HostProcess(Description description);
    ~HostProcess();
    HostProcess(const HostProcess&) = delete;
    HostProcess& operator=(const HostProcess&) = delete;

    /// For all processes of this library: what may end a call early. Null: nothing.
    static void SetWatch(CallWatch* goesOn);

    /// Starts the process unless it runs. Throws HostFailure.
    Readiness Start(const Log& log);
    /// Sends a request, answers what the host asks meanwhile, and returns its Done message. Throws
    /// HostFailure; the process is gone then.
    using Answer = std::function<QByteArray(MessageReader&)>;
    MessageReader Call(const QByteArray& request, const Log& log, const Answer& answer);

private:
    MessageReader WaitFor(Message kind, const Log& log, const Answer& answer);
    QByteArray ReadMessage(const Log& log);
    void ReadBytes(char* bytes, qint64 size, const Log& log);
    void Send(const QByteArray& message);
    void ForwardOutput(const Log& log);
    void LogPrinted(const QString& line, const Log& log);
    /// Looks whether the call may still go on.
    void Check();
    /// Ends the process, and throws.
    [[noreturn]] void Fail(const QString& what);
    QString WhyEnded();

    Description m_description;
    std::unique_ptr<QProcess> m_process;
    QDeadlineTimer m_deadline;
    Readiness m_ready;
    /// What was printed after its last line end.
    QByteArray m_printed;
    int m_lines = 0;
    int m_timeouts = 0;
};

} // namespace Halvern::Isolation
