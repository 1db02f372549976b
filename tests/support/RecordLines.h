// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "LogCapture.h"

namespace Halvern::Test {

using namespace Qt::StringLiterals;

/// What a log record says, and the operation that it names:
///
///     "INFO FileLinkManagerImp.cpp FileLinkImporterImp::RepathFiles: Repathing file /a/b"
///
/// The logger stands in front ("ResolverPlugin: ERROR ...") where it is not the module's.
QString RecordLine(const LogRecord& record);
/// All records in order. `folder` with the slash after it is cut out of the texts.
QStringList RecordLines(const LogCapture& log, const QString& folder = {});

/// Class and name in a function's signature as the compiler spells it. The parameters are nobody's
/// business: readers of the log know the operation.
QString OperationOf(const QString& signature);

/// The lines of one operation:
///
///     const RecordsOf copyFiles("FileLinkImporterImp::CopyFiles");
///     copyFiles.Info("Begin copying files")
class RecordsOf
{
public:
    explicit RecordsOf(const QString& function, const QString& file = u"FileLinkManagerImp.cpp"_s,
                       const QString& logger = {});

    QString Trace(const QString& text) const { return Line(u"TRACE"_s, text); }
    QString Debug(const QString& text) const { return Line(u"DEBUG"_s, text); }
    QString Info(const QString& text) const { return Line(u"INFO"_s, text); }
    QString Warn(const QString& text) const { return Line(u"WARN"_s, text); }
    QString Error(const QString& text) const { return Line(u"ERROR"_s, text); }

private:
    QString Line(const QString& level, const QString& text) const;

    QString m_function;
    QString m_file;
    QString m_logger;
};

/// The closing line of a stage.
QString ClosingRecord(const QString& text);

} // namespace Halvern::Test
