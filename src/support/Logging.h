// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QString>

#include <log4cplus/logger.h>

#define FILELINK_FUNCTION __PRETTY_FUNCTION__

/// Writes one line to a logger. The text is an expression that is evaluated only when the level is
/// enabled. Records name the source file that the translation unit states in a constant of its own,
///
///     static constexpr char LogSourceFile[] = "FileSetImp.cpp";
///
/// so that a class may be spread over several files and still log under one name.
#define FILELINK_LOG_TO(logger, level, text) FILELINK_LOG_AS(FILELINK_FUNCTION, logger, level, text)

/// The same in the name of another function: a record names the operation that its reader knows,
/// not the smaller function to which a part of it was moved. That one is given the operation's
/// FILELINK_FUNCTION.
#define FILELINK_LOG_AS(function, logger, level, text)                                             \
    do {                                                                                           \
        if ((logger).isEnabledFor(level))                                                          \
            ::Halvern::FileLink::WriteLogLine((logger), (level), (text), LogSourceFile, __LINE__,  \
                                              (function));                                         \
    } while (false)

/// To the module's logger, in the name of `function`.
#define FILELINK_LOG_FOR(function, level, text)                                                    \
    FILELINK_LOG_AS(function, ::Halvern::FileLink::ModuleLogger(), level, text)

/// To the module's logger.
#define FILELINK_LOG(level, text) FILELINK_LOG_TO(::Halvern::FileLink::ModuleLogger(), level, text)

namespace Halvern::FileLink {

namespace LogLevel {
inline constexpr int Fatal = 50000;
inline constexpr int Error = 40000;
inline constexpr int Warn = 30000;
inline constexpr int Info = 20000;
inline constexpr int Debug = 10000;
inline constexpr int Trace = 0;
} // namespace LogLevel

/// The logger "CorsyncFileLink". The host configures log4cplus; the module only writes.
const log4cplus::Logger& ModuleLogger();

/// Writes without asking whether the level is enabled. The one place where a QString becomes
/// log4cplus's string.
void WriteLogLine(const log4cplus::Logger& logger, int level, const QString& text, const char* file,
                  int line, const char* function);

/// A line written when the scope ends, whatever the way out.
class LogFinally
{
public:
    /// `logger` may be null: then nothing is written.
    LogFinally(const log4cplus::Logger* logger, int level, QString message);
    ~LogFinally();
    LogFinally(const LogFinally&) = delete;
    LogFinally& operator=(const LogFinally&) = delete;

    /// Writes the line now and forgets it, so that it is written once. A level that is none of the
    /// six writes nothing.
    void Log();

private:
    const log4cplus::Logger* m_logger;
    int m_level;
    QString m_message;
};

} // namespace Halvern::FileLink
