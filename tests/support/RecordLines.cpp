// SPDX-License-Identifier: Apache-2.0

#include "RecordLines.h"

namespace Halvern::Test {

using namespace Qt::StringLiterals;

namespace {

constexpr char moduleLogger[] = "CorsyncFileLink";

QString LevelName(int level)
{
    switch (level) {
    case log4cplus::TRACE_LOG_LEVEL:
        return u"TRACE"_s;
    case log4cplus::DEBUG_LOG_LEVEL:
        return u"DEBUG"_s;
    case log4cplus::INFO_LOG_LEVEL:
        return u"INFO"_s;
    case log4cplus::WARN_LOG_LEVEL:
        return u"WARN"_s;
    case log4cplus::ERROR_LOG_LEVEL:
        return u"ERROR"_s;
    case log4cplus::FATAL_LOG_LEVEL:
        return u"FATAL"_s;
    default:
        return QString::number(level);
    }
}

QString Compose(const QString& logger, const QString& level, const QString& file,
                const QString& function, const QString& text)
{
    const QString line = level + u' ' + file + u' ' + function + u": "_s + text;
    const bool isModules = logger.isEmpty() || logger == QString::fromLatin1(moduleLogger);
    return isModules ? line : logger + u": "_s + line;
}

} // namespace

QString OperationOf(const QString& signature)
{
    const QString beforeParameters = signature.section(u'(', 0, 0);
    return beforeParameters.section(u' ', -1).remove(u"Halvern::FileLink::"_s);
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
    : m_function(function), m_file(file), m_logger(logger)
{}

QString RecordsOf::Line(const QString& level, const QString& text) const
{
    return Compose(m_logger, level, m_file, m_function, text);
}

QString ClosingRecord(const QString& text)
{
    return RecordsOf(u"LogFinally::Log"_s, u"InternalServices.cpp"_s).Info(text);
}

} // namespace Halvern::Test
