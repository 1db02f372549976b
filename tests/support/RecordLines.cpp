// SPDX-License-Identifier: Apache-2.0

#include "RecordLines.h"

namespace Halvern::Test {

namespace {

constexpr char moduleLogger[] = "CorsyncFileLink";

QString LevelName(int level)
{
    switch (level) {
    case log4cplus::TRACE_LOG_LEVEL:
        return QStringLiteral("TRACE");
    case log4cplus::DEBUG_LOG_LEVEL:
        return QStringLiteral("DEBUG");
    case log4cplus::INFO_LOG_LEVEL:
        return QStringLiteral("INFO");
    case log4cplus::WARN_LOG_LEVEL:
        return QStringLiteral("WARN");
    case log4cplus::ERROR_LOG_LEVEL:
        return QStringLiteral("ERROR");
    case log4cplus::FATAL_LOG_LEVEL:
        return QStringLiteral("FATAL");
    default:
        return QString::number(level);
    }
}

QString Compose(const QString& logger, const QString& level, const QString& file,
                const QString& function, const QString& text)
{
    const QString line = level + u' ' + file + u' ' + function + QStringLiteral(": ") + text;
    const bool isModules = logger.isEmpty() || logger == QString::fromLatin1(moduleLogger);
    return isModules ? line : logger + QStringLiteral(": ") + line;
}

} // namespace

QString OperationOf(const QString& signature)
{
    const QString beforeParameters = signature.section(u'(', 0, 0);
    return beforeParameters.section(u' ', -1).remove(QStringLiteral("Halvern::FileLink::"));
}

QString RecordLine(const LogRecord& record)
{
    return Compose(record.logger, LevelName(record.level), record.file,
                   OperationOf(record.function), record.text);
}

QStringList RecordLines(const LogCapture& log, const QString& folder)
{
    QStringList lines;
    for (LogRecord record : log.Records()) {
        if (!folder.isEmpty())
            record.text.remove(folder + u'/');
        lines.append(RecordLine(record));
    }
    return lines;
}

RecordsOf::RecordsOf(const QString& function, const QString& file, const QString& logger)
    : m_function(WithoutTypes(function)), m_file(file), m_logger(logger)
{}

QString RecordsOf::Line(const QString& level, const QString& text) const
{
    return Compose(m_logger, level, m_file, m_function, text);
}

QString ClosingRecord(const QString& text)
{
    return RecordsOf(QStringLiteral("LogFinally::Log"), QStringLiteral("InternalServices.cpp"))
        .Info(text);
}

} // namespace Halvern::Test
