// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "LogCapture.h"

namespace Halvern::Test {

/// What a log record says, without the return type, namespaces, types of parameters and line of its
/// function:
///
///     "INFO FileLinkManagerImp.cpp FileLinkImporterImp::RepathFiles(...): Repathing file /a/b"
///
/// The logger stands in front ("ResolverPlugin: ERROR ...") where it is not the module's.
QString RecordLine(const LogRecord& record);
/// All records in order. `folder` with the slash after it is cut out of the texts.
QStringList RecordLines(const LogCapture& log, const QString& folder = {});

/// Class and name in a function's signature as the compiler spells it, with "(...)" when it has
/// parameters.
QString ShortSignature(const QString& signature);

/// The lines of one function; whatever stands for its parameters stands for any:
///
///     const RecordsOf copyFiles("FileLinkImporterImp::CopyFiles()");
///     copyFiles.Info("Begin copying files")
class RecordsOf
{
public:
    explicit RecordsOf(const QString& function,
                       const QString& file = QStringLiteral("FileLinkManagerImp.cpp"),
                       const QString& logger = {});

    QString Trace(const QString& text) const { return Line(QStringLiteral("TRACE"), text); }
    QString Debug(const QString& text) const { return Line(QStringLiteral("DEBUG"), text); }
    QString Info(const QString& text) const { return Line(QStringLiteral("INFO"), text); }
    QString Warn(const QString& text) const { return Line(QStringLiteral("WARN"), text); }
    QString Error(const QString& text) const { return Line(QStringLiteral("ERROR"), text); }

private:
    QString Line(const QString& level, const QString& text) const;

    QString m_function;
    QString m_file;
    QString m_logger;
};

/// The closing line of a stage.
QString ClosingRecord(const QString& text);

} // namespace Halvern::Test
