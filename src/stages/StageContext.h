// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "filelink/FileSet.h"
#include "filelink/ICancelController.h"
#include "fileset/FileCopyHistory.h"
#include "fileset/FileMappingRef.h"
#include "stages/Operations.h"
#include "stages/StageServices.h"
#include "support/Problems.h"

#include <QtCore/QList>
#include <QtCore/QStringList>

#include <exception>
#include <functional>
#include <memory>

namespace Halvern::FileLink {

/// What a host hears while files are written. What a receiver throws ends the stage.
struct StageSignals
{
    std::function<void(const QString& folder)> folderCreated = [](const QString&) {};
    std::function<void(const QString& source, const QString& target)> fileCopied =
        [](const QString&, const QString&) {};
    std::function<void(const QString& source, const QString& target)> fileMoved =
        [](const QString&, const QString&) {};
    std::function<void(const QString& file)> fileModified = [](const QString&) {};
};

/// The state of one import, on which the stages work one after the other. Nothing else connects
/// them: each is a function over a context that a test can fill by hand.
struct StageContext
{
    using NodePointer = std::shared_ptr<FileMappingRef>;
    using CopyOption = Global::CopyOption;

    /// May be null: never cancelled.
    std::shared_ptr<ICancelController> cancelController;
    /// Null before the first selection was taken.
    std::shared_ptr<FileSet> fileSet;
    CopyOption options = Global::NoCopyOption;
    /// The extensions whose links are handled; empty means all.
    QStringList fileTypes;
    /// Outlives the context. Requires: set for the stages that copy, mark, extract or repath.
    FileCopyHistory* history = nullptr;
    /// Requires: set.
    std::shared_ptr<IStageServices> services;
    /// May be null: nobody wants to know.
    std::shared_ptr<IProblemSink> problems;
    StageSignals signals;

    /// The cancellation poll: logs and returns true once the host has asked to stop.
    bool IsCanceled() const;
    bool HasOption(CopyOption option) const { return (options & option) == option; }
    /// The members of the set; none without a set.
    FileMappingList Files() const;
    bool HasFilesWhichSupportFileLinks() const;
    QList<NodePointer> Hierarchy(bool useSourceLinks) const;
    /// For a failure that the log does not tell.
    void Report(Stage stage, ProblemKind kind, const QString& file, const QString& text = {}) const;
};

/// Logs and reports that an exception ended a stage; `reason` may be null.
void EndStage(const StageContext& context, Stage stage, const char* operation,
              const char* reason) noexcept;

/// Runs a stage. What hosts and services throw while it runs (cancel controller, receivers of
/// signals, problem sink, database), and a lack of memory, ends it as failed; the stages after it
/// can run.
template <class Body>
bool RunStage(const StageContext& context, Stage stage, const char* operation, Body body) noexcept
{
    try {
        return body();
    } catch (const std::exception& exception) {
        EndStage(context, stage, operation, exception.what());
    } catch (...) {
        EndStage(context, stage, operation, nullptr);
    }
    return false;
}

} // namespace Halvern::FileLink
