// SPDX-License-Identifier: Apache-2.0

#include "SourceFolders.h"

#include "Paths.h"
#include "RealPaths.h"

#include <QtCore/QFileInfo>

namespace Halvern::Jobs {

namespace {

Base::FileResult NotOfSelection()
{
    return Base::FileResult::Refused(Base::FileProblem::LeadsOutside,
                                     "it is no part of the selection");
}

} // namespace

SourceFolders::SourceFolders(const QStringList& sources) : m_sources(sources.begin(), sources.end())
{
    for (const QString& source : sources) {
        const QString folder = QFileInfo(source).path();
        Base::RootedFolder& opened = m_folders[folder];
        if (!opened.IsOpen())
            static_cast<void>(opened.Open(Native(folder)));
    }
}

SourceFolders::Place SourceFolders::Find(const QString& path) const
{
    const QString source = NearestOf(m_sources, path);
    if (source.isEmpty())
        return {};
    const QString above = QFileInfo(source).path();
    const auto found = m_folders.find(above);
    const qsizetype start = above.endsWith(u'/') ? above.size() : above.size() + 1;
    if (found == m_folders.end() || !found->second.IsOpen())
        return {};
    return {&found->second, Native(path.mid(start))};
}

Base::FileResult SourceFolders::Status(const QString& path, Base::FileStatus& status)
{
    const Place place = Find(path);
    return place.folder ? place.folder->Status(place.below, status) : NotOfSelection();
}

Base::FileResult SourceFolders::Remove(const QString& path)
{
    const Place place = Find(path);
    return place.folder ? place.folder->Remove(place.below) : NotOfSelection();
}

Base::FileResult SourceFolders::RemoveFolder(const QString& path)
{
    const Place place = Find(path);
    return place.folder ? place.folder->RemoveFolder(place.below) : NotOfSelection();
}

} // namespace Halvern::Jobs
