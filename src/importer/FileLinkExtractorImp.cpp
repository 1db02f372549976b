// SPDX-License-Identifier: Apache-2.0

#include "importer/FileLinkExtractorImp.h"

#include "importer/PlatformServices.h"
#include "stages/FileLinkExtraction.h"

#include <utility>

namespace Halvern::FileLink {

using Stages::FileLinkExtraction;

FileLinkExtractorImp::FileLinkExtractorImp(std::shared_ptr<ICancelController> controller,
                                           FileCopyHistory* history)
{
    m_context.cancelController = std::move(controller);
    m_context.history = history;
    m_context.services = std::make_shared<PlatformServices>();
}

FileLinkExtractorImp::FileLinkExtractorImp(const StageContext& context) : m_context(context) {}

bool FileLinkExtractorImp::ExtractFileLinks(FileSet* fileSet, bool recursive,
                                            const QStringList& fileTypes)
{
    m_context.fileTypes = fileTypes;
    return FileLinkExtraction(m_context).Run(*fileSet, recursive);
}

bool FileLinkExtractorImp::ExtractFileLinks(const FileMappingPointer& mapping,
                                            const QStringList& fileTypes)
{
    m_context.fileTypes = fileTypes;
    return FileLinkExtraction(m_context).ExtractLinks(mapping);
}

bool FileLinkExtractorImp::ExtractFileLinks(const QString& path, FileLinkList& links)
{
    return FileLinkExtraction(m_context).ReadLinks(path, links);
}

void FileLinkExtractorImp::LogFileLinks(const QString& path, const FileLinkList& links) const
{
    FileLinkExtraction(m_context).LogLinks(path, links);
}

bool FileLinkExtractorImp::CheckIfCanceled() const
{
    return FileLinkExtraction(m_context).IsCanceled();
}

} // namespace Halvern::FileLink
