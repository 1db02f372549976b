// SPDX-License-Identifier: Apache-2.0

#include "Mappings.h"

namespace Halvern::Test {

FileMappingPointer MakeFile(const QString& source, FileMappingFlag flags, const QString& target)
{
    const auto mapping = std::make_shared<FileMapping>(source, target, 7);
    mapping->SetFlagAll(flags);
    return mapping;
}

FileLinkList Links(const QStringList& paths)
{
    FileLinkList links;
    for (const QString& path : paths)
        links.append({-1, QString::number(links.size() + 1), path, {}});
    return links;
}

FileMappingPointer AddTo(FileSet& set, const QString& source, const QStringList& links,
                         FileMappingFlag flags)
{
    const FileMappingPointer mapping = MakeFile(source, flags);
    mapping->SetSourceFileLinks(Links(links));
    set.AddFile(mapping);
    return mapping;
}

FileSetImp& Imp(FileSet& set)
{
    return *FileSetImp::Of(&set);
}

QStringList SourcesOf(const FileMappingList& files)
{
    QStringList sources;
    for (const FileMappingPointer& file : files)
        sources.append(file->GetSourceFile());
    return sources;
}

} // namespace Halvern::Test
