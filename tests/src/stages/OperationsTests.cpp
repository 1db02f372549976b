// SPDX-License-Identifier: Apache-2.0

// The names of operations in log records are those that the compiler gives functions.

#include "stages/StageContext.h"
#include "syncplugin/FileLinkInfo.h"

#include <gtest/gtest.h>

#include <QtCore/QSet>

#include <string>
#include <utility>

#define SPELLED __PRETTY_FUNCTION__

namespace Halvern::FileLink {

namespace {

/// Functions with the parameters of the operations: what the compiler makes of them is compared.
struct Spelled
{
    using NodePointer = std::shared_ptr<FileMappingRef>;
    using CopyOption = Global::CopyOption;
    struct DatabaseUpdateState
    {};

    static std::string ImportCloudFiles(int, const QStringList&, const QList<SyncItem::SyncOption>&)
    {
        return SPELLED;
    }
    // NOLINTNEXTLINE(performance-unnecessary-value-param): so is the operation's
    static std::string Initialize(const QStringList&, QString, bool, CopyOption, const QStringList&)
    {
        return SPELLED;
    }
    static std::string AssignDefault(const NodePointer&, QSet<const FileMapping*>&)
    {
        return SPELLED;
    }
    static std::string OfMapping(const FileMappingPointer&) { return SPELLED; }
    static std::string CopyFile(const FileMappingPointer&, bool) { return SPELLED; }
    static std::string CreateFolder(const QString&, bool) { return SPELLED; }
    static std::string LogNode(const NodePointer&, bool, int, QSet<QString>&) { return SPELLED; }
    static std::string RepathFile(const QString&, const QList<SyncPlugin::FileLinkInfo>&)
    {
        return SPELLED;
    }
    static std::string RepathItems(const QList<std::shared_ptr<SyncItem>>&) { return SPELLED; }
    static std::string UpdateNode(const NodePointer&, DatabaseUpdateState&) { return SPELLED; }
    static std::string ExtractSet(FileSet*, bool, const QStringList&) { return SPELLED; }
    static std::string ExtractMapping(const FileMappingPointer&, const QStringList&)
    {
        return SPELLED;
    }
    static std::string ExtractFile(const QString&, FileLinkList&) { return SPELLED; }
    static std::string LogLinks(const QString&, const FileLinkList&) { return SPELLED; }
};

/// The parameters of a signature, without what follows them.
std::string Parameters(const std::string& signature)
{
    const std::size_t begin = signature.find('(');
    return signature.substr(begin, signature.rfind(')') + 1 - begin);
}

} // namespace

TEST(Operations, NameParametersAsTheCompilerDoes)
{
    QSet<const FileMapping*> visited;
    QSet<QString> processed;
    Spelled::DatabaseUpdateState state;
    FileLinkList links;
    const std::pair<const char*, std::string> operations[] = {
        {Operation::ImportCloudFiles, Spelled::ImportCloudFiles(0, {}, {})},
        {Operation::Initialize, Spelled::Initialize({}, {}, false, {}, {})},
        {Operation::AssignDefaultTargetPaths, Spelled::AssignDefault({}, visited)},
        {Operation::MarkCollision, Spelled::OfMapping({})},
        {Operation::CopyFile, Spelled::CopyFile({}, false)},
        {Operation::CreateFolder, Spelled::CreateFolder({}, false)},
        {Operation::LogFileTreeNode, Spelled::LogNode({}, false, 0, processed)},
        {Operation::RepathMapping, Spelled::OfMapping({})},
        {Operation::RepathFile, Spelled::RepathFile({}, {})},
        {Operation::RepathItems, Spelled::RepathItems({})},
        {Operation::UpdateSyncDatabaseNode, Spelled::UpdateNode({}, state)},
        {Operation::ExtractFileLinks, Spelled::ExtractSet(nullptr, false, {})},
        {Operation::ExtractLinksOfMapping, Spelled::ExtractMapping({}, {})},
        {Operation::ExtractLinksOfFile, Spelled::ExtractFile({}, links)},
        {Operation::LogFileLinks, Spelled::LogLinks({}, {})},
    };
    for (const auto& [operation, spelled] : operations)
        EXPECT_EQ(Parameters(operation), Parameters(spelled)) << operation;
}

} // namespace Halvern::FileLink
