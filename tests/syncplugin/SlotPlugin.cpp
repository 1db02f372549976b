// SPDX-License-Identifier: Apache-2.0

// A plug-in that knows the contract's headers and nothing else. Its objects call every operation of
// the objects that they are handed, once, in the order of the headers.

#include "syncplugin/SyncPlugin.h"

namespace {

using namespace Halvern::SyncPlugin;

void CallLogger(IPluginLogger* logger)
{
    logger->LogFatal(nullptr);
    logger->LogError(nullptr);
    logger->LogWarn(nullptr);
    logger->LogInfo(nullptr);
    logger->LogDebug(nullptr);
    logger->LogTrace(nullptr);
}

void CallIterator(IFileMappingIterator* children)
{
    children->HasNext();
    children->Next();
    children->ToFront();
}

void CallMapping(IFileMapping* mapping)
{
    mapping->GetRefId(nullptr, 0);
    mapping->GetSourceFile(nullptr, 0);
    mapping->GetTargetFile(nullptr, 0);
    mapping->GetTargetPath(nullptr, 0);
    mapping->SetTargetFile(nullptr, false);
    mapping->ResolveTargetPath(nullptr, nullptr, 0);
    mapping->HasTargetFile();
    mapping->ExistsInTarget();
    mapping->GetTargetRootFolder(nullptr, 0);
    mapping->HasFlag(0);
    mapping->GetFlag();
    mapping->SetFlag(0, false);
    CallIterator(mapping->GetChildren());
    mapping->GetParent();
    mapping->GetRoot();
    mapping->ChangeSourceFile(nullptr);
}

class Resolver : public IFileLinkResolver
{
public:
    /// `*count` comes in as the number of records wanted; record i names itself by its index.
    bool GetFileLinks(const WideChar*, FileLinkInfo** links, int* count,
                      IFileLinkResolverContext* context) override
    {
        CallLogger(context->GetLogger());
        *links = new FileLinkInfo[static_cast<unsigned>(*count)]();
        for (int i = 0; i < *count; ++i) {
            (*links)[i].size = sizeof(FileLinkInfo);
            (*links)[i].referenceId[MaxLinkText - 2] = static_cast<WideChar>(i + 1);
            (*links)[i].path[0] = static_cast<WideChar>(0xFF00 + i);
        }
        return true;
    }

    bool RepathFileLinks(const WideChar* file, const FileLinkInfo* links, int count,
                         IFileLinkResolverContext*) override
    {
        return file[0] == u'f' && count == 2 && links[1].path[0] == u'p';
    }
};

class Layout : public IFileLayout
{
public:
    bool AssignTargetPaths(IFileMapping* mapping, IFileLayoutContext* context) override
    {
        CallLogger(context->GetLogger());
        CallMapping(mapping);
        return true;
    }
};

class ResolverFactory : public IFileLinkResolverFactory
{
public:
    IFileLinkResolver* CreateFileLinkResolver() override { return new Resolver; }
};

class LayoutFactory : public ISyncPluginFactory
{
public:
    IFileLayout* CreateFileLayout() override { return new Layout; }
};

} // namespace

SYNCPLUGIN_EXPORT IFileLinkResolverFactory* CreateFileLinkResolverFactory()
{
    return new ResolverFactory;
}

SYNCPLUGIN_EXPORT ISyncPluginFactory* CreateSyncPluginFactory()
{
    return new LayoutFactory;
}

SYNCPLUGIN_EXPORT_CONTRACT_VERSION();
