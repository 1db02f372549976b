// SPDX-License-Identifier: Apache-2.0

#include "DoctorCommand.h"

#include "Console.h"

#include "corsync/Doctor.h"

#include <QtCore/QDir>

#include <algorithm>

namespace Halvern::Cli {

namespace {

QString WordOf(Jobs::Examined where)
{
    switch (where) {
    case Jobs::Examined::Settings:
        return QStringLiteral("settings");
    case Jobs::Examined::CloudFolder:
        return QStringLiteral("cloud folder");
    case Jobs::Examined::Database:
        return QStringLiteral("database");
    case Jobs::Examined::Copies:
        return QStringLiteral("copies");
    case Jobs::Examined::BaseStore:
        return QStringLiteral("base store");
    case Jobs::Examined::Plugins:
        return QStringLiteral("plug-ins");
    }
    return {};
}

ExitCode CodeOf(const Jobs::Symptom& symptom)
{
    if (!symptom.isFault)
        return ExitCode::Complete;
    switch (symptom.where) {
    case Jobs::Examined::Settings:
        return ExitCode::Usage;
    case Jobs::Examined::Database:
    case Jobs::Examined::Plugins:
        return ExitCode::PluginOrDatabase;
    case Jobs::Examined::CloudFolder:
    case Jobs::Examined::Copies:
    case Jobs::Examined::BaseStore:
        return ExitCode::Failed;
    }
    return ExitCode::Failed;
}

void Print(const Jobs::Symptom& symptom, Console& console)
{
    QString line = (symptom.isFault ? QStringLiteral("fault") : QStringLiteral("note"))
                       .leftJustified(7) +
                   WordOf(symptom.where) + QStringLiteral(": ");
    if (!symptom.subject.isEmpty())
        line += QDir::toNativeSeparators(symptom.subject) + QStringLiteral(": ");
    line += symptom.text;
    if (symptom.isFault)
        console.ProblemLine(line);
    else
        console.Line(line);
    const QString advice = QString(7, u' ') + QStringLiteral("-> ") + symptom.advice;
    if (symptom.isFault)
        console.ProblemLine(advice);
    else
        console.Line(advice);
    console.Json({{QStringLiteral("event"), QStringLiteral("symptom")},
                  {QStringLiteral("where"), WordOf(symptom.where)},
                  {QStringLiteral("fault"), symptom.isFault},
                  {QStringLiteral("subject"), symptom.subject},
                  {QStringLiteral("text"), symptom.text},
                  {QStringLiteral("advice"), symptom.advice}});
}

QString Counted(qsizetype count, const QString& one, const QString& several)
{
    return count == 1 ? QStringLiteral("1 ") + one : QString::number(count) + u' ' + several;
}

} // namespace

ExitCode RunDoctor(const DoctorOptions& options, const CommonOptions& common,
                   const Jobs::CancelToken& cancel, Console& console)
{
    const Jobs::Examination found = Jobs::Examine(options.places, common.pluginPaths, &cancel);
    QList<ExitCode> codes;
    for (const Jobs::Symptom& symptom : found.symptoms) {
        Print(symptom, console);
        codes.append(CodeOf(symptom));
    }
    if (found.cancelled) {
        codes.append(ExitCode::Cancelled);
        console.Error(QStringLiteral("cancelled; the rest was not looked at"));
    }
    const ExitCode code = MostSerious(codes);
    const qsizetype faults =
        std::count_if(found.symptoms.begin(), found.symptoms.end(),
                      [](const Jobs::Symptom& symptom) { return symptom.isFault; });
    const QString result =
        faults == 0 ? QStringLiteral("no fault found")
                    : Counted(faults, QStringLiteral("fault"), QStringLiteral("faults"));
    console.Line(result + QStringLiteral("; ") +
                 Counted(found.copies, QStringLiteral("copy is recorded"),
                         QStringLiteral("copies are recorded")));
    console.Json({{QStringLiteral("event"), QStringLiteral("summary")},
                  {QStringLiteral("faults"), faults},
                  {QStringLiteral("notes"), found.symptoms.size() - faults},
                  {QStringLiteral("copies"), found.copies},
                  {QStringLiteral("exitCode"), int(code)}});
    return code;
}

} // namespace Halvern::Cli
