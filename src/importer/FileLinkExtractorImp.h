// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "stages/StageContext.h"

namespace Halvern::FileLink {

/// Finds links with the plug-ins, the sync database and the copy history. A front of the extraction
/// stage, Stages::FileLinkExtraction, which says what the calls do.
class FileLinkExtractorImp
{
public:
    /// Over the platform's services.
    FileLinkExtractorImp(std::shared_ptr<ICancelController> controller, FileCopyHistory* history);
    /// For the import of this context.
    explicit FileLinkExtractorImp(const StageContext& context);

    bool ExtractFileLinks(FileSet* fileSet, bool recursive, const QStringList& fileTypes);
    bool ExtractFileLinks(const FileMappingPointer& mapping, const QStringList& fileTypes);
    bool ExtractFileLinks(const QString& path, FileLinkList& links);
    void LogFileLinks(const QString& path, const FileLinkList& links) const;
    bool CheckIfCanceled() const;

private:
    StageContext m_context;
};

} // namespace Halvern::FileLink
