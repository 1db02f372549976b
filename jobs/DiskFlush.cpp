// SPDX-License-Identifier: Apache-2.0

#include "DiskFlush.h"

#include "Paths.h"
#include "RealPaths.h"

#include "base/FileCopy.h"
#include "base/FileStatus.h"
#include "base/FileSystemFlush.h"

#include <utility>

namespace Halvern::Jobs {

using Base::FileProblem;
using Base::FileResult;

namespace {

/// Of so few files a flush of each is quicker than one of all that others have written, too.
constexpr std::size_t Few = 8;

DiskFlush::Watch& TheWatch()
{
    static DiskFlush::Watch watch;
    return watch;
}

FileResult Watched()
{
    return TheWatch() ? TheWatch()() : FileResult();
}

/// A mounted disk may lie below a folder: what tells one from another is where the file is.
FileResult FlushOnce(const std::filesystem::path& folder, std::set<std::uint64_t>& done)
{
    const Base::FileStatus status = Base::ReadFileStatus(folder);
    // What is gone meanwhile is nobody's loss.
    if (!status.Exists() || !done.insert(status.device).second)
        return {};
    const FileResult watched = Watched();
    return watched ? Base::FlushFileSystem(folder) : watched;
}

} // namespace

void DiskFlush::SetWatch(Watch watch)
{
    TheWatch() = std::move(watch);
}

void DiskFlush::AddName(const std::filesystem::path& entry)
{
    std::filesystem::path folder = entry.parent_path();
    while (m_folders.insert(folder.native()).second && !folder.empty())
        folder = folder.parent_path();
}

FileResult DiskFlush::Run()
{
    const FileResult result = m_isWanted && !IsEmpty() ? RunAll() : FileResult();
    if (!result)
        return result;
    m_files.clear();
    m_folders.clear();
    m_outside.clear();
    return result;
}

FileResult DiskFlush::RunAll() const
{
    if (m_files.size() + m_folders.size() + std::size_t(m_outside.size()) <= Few)
        return FlushEach();
    const FileResult flushed = FlushFileSystems();
    return flushed.Problem() == FileProblem::NotOffered ? FlushEach() : flushed;
}

FileResult DiskFlush::FlushFileSystems() const
{
    std::set<std::uint64_t> done;
    FileResult result = FlushOnce(m_cloud.Path(), done);
    std::set<std::filesystem::path::string_type> folders = m_folders;
    for (const std::filesystem::path& file : m_files)
        folders.insert(file.parent_path().native());
    for (const auto& folder : folders)
        if (result)
            result = FlushOnce(m_cloud.Path() / folder, done);
    QSet<QString> outside;
    for (const QString& file : m_outside)
        outside.insert(FolderAbove(file));
    for (const QString& folder : std::as_const(outside))
        if (result)
            result = FlushOnce(Native(folder), done);
    return result;
}

FileResult DiskFlush::FlushEach() const
{
    FileResult result;
    const auto flush = [&](const auto& call) {
        if (result)
            result = Watched();
        if (result)
            result = call();
        // What is gone meanwhile is nobody's loss.
        if (result.Problem() == FileProblem::Missing)
            result = {};
    };
    for (const std::filesystem::path& file : m_files)
        flush([&] { return m_cloud.Flush(file); });
    for (const auto& folder : m_folders)
        flush([&] { return m_cloud.Flush(folder); });
    for (const QString& file : m_outside)
        flush([&] { return Base::FlushFile(Native(file)); });
    return result;
}

} // namespace Halvern::Jobs
