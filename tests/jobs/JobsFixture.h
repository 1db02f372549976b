// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "FileTree.h"
#include "TestPlugins.h"

#include "corsync/ImportJob.h"

#include <QtCore/QStringList>

#include <gtest/gtest.h>

#include <optional>

namespace Halvern::Test {

/// "copied", "in place" ...
QString OutcomeName(Jobs::Outcome outcome);
/// "copied work/a.gltf -> cloud/a.gltf", with what else the result says; paths below the tree are
/// shown relative to it.
QStringList LinesOf(const QList<Jobs::FileResult>& results, const FileTree& tree);

/// A session over a tree: cloud cache folder "cloud", database "sync.db", the real plug-ins and the
/// test resolver for "tlk" files.
class JobsFixture : public ::testing::Test
{
protected:
    JobsFixture();

    SyncServices::ServicesSettings Settings() const;
    QStringList PluginFolders() const;
    /// Ends the session that is, and begins another.
    Jobs::Session& Begin(Jobs::SessionUse use = Jobs::SessionUse::Import);
    /// Ends the session, and forgets what was imported.
    void StartOver();
    /// Copies the sample project into "work/shed", without the poster that Shed.gltf links.
    void TakeGardenShed();
    Jobs::ImportRequest Request(const QStringList& sources, const QString& target = {}) const;
    /// Plans and executes.
    Jobs::JobResult Import(const Jobs::ImportRequest& request);

    FileTree tree;
    std::optional<Jobs::Session> session;
};

/// Notes everything in order, one line each.
class NotingObserver : public Jobs::IJobObserver
{
public:
    void PhaseBegun(Jobs::Phase phase, qint64 total) override;
    void FileDone(const Jobs::FileResult& result) override;
    void ProblemFound(const FileLink::Problem& problem) override;
    void Progressed(const Jobs::Progress& progress) override;

    /// The results told, and where in them each phase began.
    QList<Jobs::FileResult> done;
    QMap<Jobs::Phase, qsizetype> doneBefore;
    QList<Jobs::Phase> phases;
    QMap<Jobs::Phase, qint64> totals;
    QStringList problems;
    QList<Jobs::Progress> progress;
};

} // namespace Halvern::Test
