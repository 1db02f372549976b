// SPDX-License-Identifier: Apache-2.0

#include "importer/FileLinkImporterImp.h"

#include "fileset/FileSetImp.h"
#include "support/Logging.h"

#include <QtCore/QDir>

#include <utility>

namespace Halvern::FileLink {

namespace {
constexpr char LogSourceFile[] = "FileLinkManagerImp.cpp";
}

FileLinkImporterImp::FileLinkImporterImp(std::shared_ptr<ICancelController> controller)
    : m_cancelController(std::move(controller)), m_copyHistory(std::make_unique<FileCopyHistory>())
{}

FileLinkImporterImp::~FileLinkImporterImp() = default;

void FileLinkImporterImp::SetCopyOption(CopyOption option, bool on)
{
    m_copyOptions = on ? m_copyOptions | option : m_copyOptions & ~option;
}

bool FileLinkImporterImp::CheckIfCanceled() const
{
    if (!m_cancelController || !m_cancelController->IsCancelRequested())
        return false;
    FILELINK_LOG(LogLevel::Info, QStringLiteral("Operation canceled"));
    return true;
}

bool FileLinkImporterImp::HasFilesWhichSupportFileLinks() const
{
    return m_fileSet && m_fileSet->HasFilesWhichSupportFileLinks();
}

FileMappingList FileLinkImporterImp::Files() const
{
    return m_fileSet ? m_fileSet->GetFiles() : FileMappingList();
}

QList<FileLinkImporterImp::NodePointer> FileLinkImporterImp::Hierarchy(bool useSourceLinks) const
{
    const FileSetImp* const set = FileSetImp::Of(m_fileSet.get());
    return set ? set->GetFileLinkHierarchy(useSourceLinks) : QList<NodePointer>();
}

bool FileLinkImporterImp::HasOption(CopyOption option) const
{
    return (m_copyOptions & option) == option;
}

FileLinkImporterImp::SourceList::SourceList(FileMappingList list) : files(std::move(list))
{
    for (int i = 0; i < files.size(); ++i)
        index.Add(files[i]->GetSourceFile(), i);
}

FileMappingPointer FileLinkImporterImp::SourceList::Find(const QString& path) const
{
    const int found = index.Find(QDir::cleanPath(path));
    return found < 0 ? nullptr : files[found];
}

} // namespace Halvern::FileLink
