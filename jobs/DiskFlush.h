// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "base/FileResult.h"
#include "base/RootedFolder.h"

#include <QtCore/QSet>
#include <QtCore/QString>

#include <filesystem>
#include <functional>
#include <set>
#include <vector>

namespace Halvern::Jobs {

/// What a job has written and must be on the disk before something counts on it: noted file by
/// file, and flushed at once. Many files are flushed with all that their file system has to write,
/// which is one wait for the disk; a few, and those of systems that cannot do that, one by one.
class DiskFlush
{
public:
    /// `cloud` outlives it. Not wanted, nothing is ever flushed, and that is a success.
    DiskFlush(const Base::RootedFolder& cloud, bool isWanted) : m_cloud(cloud), m_isWanted(isWanted)
    {}

    /// The data of a file below the cloud folder.
    void AddFile(const std::filesystem::path& file) { m_files.push_back(file); }
    /// That an entry below the cloud folder has its name, and the folders on the way have theirs.
    void AddName(const std::filesystem::path& entry);
    /// A file that lies elsewhere, and its name. Absolute.
    void AddOutside(const QString& file) { m_outside.insert(file); }
    bool IsWanted() const { return m_isWanted; }
    bool IsEmpty() const { return m_files.empty() && m_folders.empty() && m_outside.isEmpty(); }

    /// Waits until what was noted is on the disk. After a failure it is still to be flushed; a file
    /// that is gone by then is none.
    Base::FileResult Run();

    /// For tests: asked before each flush of a file or of a file system; its failure is that of the
    /// flush. An empty function ends that.
    using Watch = std::function<Base::FileResult()>;
    static void SetWatch(Watch watch);

private:
    Base::FileResult RunAll() const;
    Base::FileResult FlushFileSystems() const;
    Base::FileResult FlushEach() const;

    const Base::RootedFolder& m_cloud;
    const bool m_isWanted;
    std::vector<std::filesystem::path> m_files;
    /// As text: to compare paths takes long.
    std::set<std::filesystem::path::string_type> m_folders;
    QSet<QString> m_outside;
};

} // namespace Halvern::Jobs
