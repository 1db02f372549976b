// SPDX-License-Identifier: Apache-2.0

#include "stages/StageContext.h"

#include "fileset/FileSetImp.h"

namespace Halvern::FileLink {

namespace {

constexpr char LogSourceFile[] = "FileLinkManagerImp.cpp";

QString SentenceOf(const char* reason)
{
    return QStringLiteral("An exception ended the stage: %1")
        .arg(reason ? QString::fromUtf8(reason) : QStringLiteral("unknown exception"));
}

} // namespace

bool StageContext::IsCanceled() const
{
    if (!cancelController || !cancelController->IsCancelRequested())
        return false;
    FILELINK_LOG_FOR(Operation::CheckIfCanceled, LogLevel::Info,
                     QStringLiteral("Operation canceled"));
    return true;
}

FileMappingList StageContext::Files() const
{
    return fileSet ? fileSet->GetFiles() : FileMappingList();
}

bool StageContext::HasFilesWhichSupportFileLinks() const
{
    return fileSet && fileSet->HasFilesWhichSupportFileLinks();
}

QList<StageContext::NodePointer> StageContext::Hierarchy(bool useSourceLinks) const
{
    const FileSetImp* const set = FileSetImp::Of(fileSet.get());
    return set ? set->GetFileLinkHierarchy(useSourceLinks) : QList<NodePointer>();
}

void StageContext::Report(Stage stage, ProblemKind kind, const QString& file,
                          const QString& text) const
{
    ReportProblem(problems.get(), {stage, kind, file, text, {}});
}

void EndStage(const StageContext& context, Stage stage, const char* operation,
              const char* reason) noexcept
{
    // Where even telling fails, the result still says that the stage failed.
    try {
        FILELINK_LOG_FOR(operation, LogLevel::Error, SentenceOf(reason));
    } catch (...) {
    }
    try {
        context.Report(stage, ProblemKind::StageEnded, QString(), SentenceOf(reason));
    } catch (...) {
    }
}

} // namespace Halvern::FileLink
