// SPDX-License-Identifier: Apache-2.0

#include "CopyingFixture.h"

namespace Halvern::Test {

using namespace Qt::StringLiterals;

using FileLink::FileLinkManager;

CopyingFixture::CopyingFixture()
{
    FileLinkManager::Initialize();
    RegisterTestResolver(tree, u"plugins"_s);
    Manager().AddPluginRegistrationFolders({tree.Path(u"plugins"_s)});
    Manager().AddPluginSearchPaths({TestPluginFolder()});
    Restart();
}

CopyingFixture::~CopyingFixture()
{
    importer.reset();
    FileLinkManager::Uninitialize();
}

void CopyingFixture::Restart(Global::CopyOption options)
{
    importer.reset();
    importer = std::make_unique<FileLinkImporterImp>(controller);
    // A source that does not exist is passed over: the set is there, and empty.
    EXPECT_TRUE(importer->Initialize({tree.Path(u"no such file"_s)}, Cloud(), false, options, {}));
    log.Clear();
    controller->polls = 0;
}

FileMappingPointer CopyingFixture::Add(const QString& source, const QString& target,
                                       FileMappingFlag flags, const FileLinkList& links)
{
    return AddPaths(tree.Path(source), target.isEmpty() ? QString() : Cloud(target), flags, links);
}

FileMappingPointer CopyingFixture::AddPaths(const QString& source, const QString& target,
                                            FileMappingFlag flags, const FileLinkList& links)
{
    const auto mapping =
        std::make_shared<FileMapping>(source, target, settings.authenticationConfigurationId);
    mapping->SetFlag(flags, true);
    mapping->SetSourceFileLinks(links);
    EXPECT_TRUE(importer->GetFileSet()->AddFile(mapping));
    return mapping;
}

bool CopyingFixture::Copy(const FileMappingPointer& mapping, bool deleteSource)
{
    return importer->CopyFile(mapping, deleteSource);
}

bool CopyingFixture::Prepare(const QStringList& sources, const QString& target,
                             Global::CopyOption options)
{
    QStringList paths;
    for (const QString& source : sources)
        paths.append(tree.Path(source));
    const bool prepared = importer->Initialize(paths, Cloud(target), false, options, {}) &&
                          importer->ExtractFileLinks() && importer->AssignTargetPaths() &&
                          importer->MarkCollisions() && importer->ResolveCollisions();
    log.Clear();
    controller->polls = 0;
    return prepared;
}

QStringList CopyingFixture::LinesWith(const QString& begin) const
{
    QStringList lines = Lines();
    lines.removeIf([&](const QString& line) { return !line.startsWith(begin); });
    return lines;
}

std::shared_ptr<SyncItem> CopyingFixture::Item(const QString& cloudPath) const
{
    return Database().GetSyncItem(Cloud(cloudPath), true, settings.authenticationConfigurationId,
                                  FileItem::ItemOnly);
}

SyncServices::FileLink Link(const QString& refId, const QString& path)
{
    SyncServices::FileLink link;
    link.RefId = refId;
    link.Path = path;
    return link;
}

QByteArray LinkText(const QList<std::pair<QString, QString>>& links)
{
    QByteArray text;
    for (const auto& [refId, path] : links)
        text += "link " + refId.toUtf8() + ' ' + path.toUtf8() + '\n';
    return text;
}

QStringList PathsOf(const FileLinkList& links)
{
    QStringList paths;
    for (const SyncServices::FileLink& link : links)
        paths.append(link.Path);
    return paths;
}

} // namespace Halvern::Test
