// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "base/RootedFolder.h"

#include <QtCore/QLockFile>
#include <QtCore/QString>

#include <filesystem>
#include <memory>

namespace Halvern::Jobs {

/// Whether a folder of this name is one that Staging makes, and the name of the file in it that is
/// locked while its job runs.
bool IsStagingName(const QString& name);
QString LockOfStaging();

/// A hidden folder in the cloud folder where one file after the other is made ready. Whatever is in
/// it when the job ends, also that of jobs that were killed, is removed; a folder whose job still
/// runs is left alone.
class Staging
{
public:
    /// `cloud` outlives it.
    explicit Staging(const Base::RootedFolder& cloud) : m_cloud(cloud) {}
    ~Staging();
    Staging(const Staging&) = delete;
    Staging& operator=(const Staging&) = delete;

    /// Makes the folder. Required before the others. A failure names the cloud folder.
    Base::FileResult Begin();
    /// The place for a file of this name, below the cloud folder. What stood there is removed.
    std::filesystem::path PlaceFor(const QString& name) const;
    /// The same beside a target below the cloud folder, whose folder exists: some formats store
    /// paths that depend on where the file lies. What is left of it when the job ends goes, and
    /// whatever a plug-in has put beside it under a name that begins with its own. Empty
    /// when that cannot be noted for whoever cleans up.
    std::filesystem::path PlaceBeside(const std::filesystem::path& target) const;
    /// The text of a failure on a staged file, with what people know in place of the names of this
    /// folder and its file: the path that the file is for.
    QString TextOf(const Base::FileResult& failure, const QString& target) const;
    /// Of the folder, which no other job has.
    std::string Name() const { return m_folder.string(); }
    /// The same, absolute.
    std::filesystem::path Absolute(const std::filesystem::path& place) const;

private:
    void RemoveLeftovers() const;
    bool Clear(const std::filesystem::path& folder) const;
    bool RemoveBeside(const std::filesystem::path& folder) const;
    bool NoteFolder(const std::filesystem::path& folder) const;

    const Base::RootedFolder& m_cloud;
    std::filesystem::path m_folder;
    std::unique_ptr<QLockFile> m_lock;
};

} // namespace Halvern::Jobs
