// SPDX-License-Identifier: Apache-2.0

#include "plugins/CallLog.h"

#include "syncplugin/SyncPlugin.h"

#include <algorithm>
#include <stdexcept>

// A plug-in with one fault, which its build names as ZOO_FAULT. It offers both services and logs
// the life of its objects.

namespace {

using namespace Halvern::SyncPlugin;
using Halvern::Test::LogCall;

enum class Fault
{
    WellBehaved,
    NullFactory,
    NullFactoryTheSecondTime,
    NullObject,
    NullObjectTheSecondTime,
    ThrowingFactory,
    ThrowingCreation,
    ThrowingInitialization,
    CallReturnsFalse,
    CallThrows,
    CallThrowsAnInt,
    CountWithoutArray,
    NegativeCount,
    NegativeCountWithArray,
    ZeroCountWithArray,
    UnterminatedTexts,
    // What it was built with.
    StatedVersion,
    OtherVersion,
    OtherRecordSize,
    OtherCompiler,
    UnknownCompiler,
    ThrowingVersion,
    GarbageVersion,
};

constexpr Fault fault = Fault::ZOO_FAULT;
constexpr bool callFails = fault == Fault::CallReturnsFalse;

void ThrowWhen(bool faulty)
{
    if (faulty)
        throw std::runtime_error("a fault of the zoo");
}

struct Initialized
{
    Initialized() { ThrowWhen(fault == Fault::ThrowingInitialization); }
};

const Initialized initialized;

bool Call(const char* name)
{
    LogCall(name);
    ThrowWhen(fault == Fault::CallThrows);
    if (fault == Fault::CallThrowsAnInt)
        throw 7;
    return !callFails;
}

/// What GetFileLinks gives the host, right or wrong.
void GiveLinks(FileLinkInfo** links, int* count)
{
    const bool without = fault == Fault::CountWithoutArray || fault == Fault::NegativeCount;
    *links = without ? nullptr : new FileLinkInfo[2]{};
    *count = 2;
    if (fault == Fault::NegativeCount || fault == Fault::NegativeCountWithArray)
        *count = -3;
    if (fault == Fault::ZeroCountWithArray)
        *count = 0;
    if (fault == Fault::UnterminatedTexts) {
        for (int i = 0; i < *count; ++i) {
            std::fill_n((*links)[i].referenceId, MaxLinkText, WideChar('r'));
            std::fill_n((*links)[i].path, MaxLinkText, WideChar('p'));
        }
    }
}

class Resolver : public IFileLinkResolver
{
public:
    Resolver() { LogCall("new resolver"); }
    ~Resolver() override { LogCall("delete resolver"); }

    bool GetFileLinks(const WideChar*, FileLinkInfo** links, int* count,
                      IFileLinkResolverContext*) override
    {
        if (!Call("GetFileLinks"))
            return false;
        GiveLinks(links, count);
        return true;
    }

    bool RepathFileLinks(const WideChar*, const FileLinkInfo*, int,
                         IFileLinkResolverContext*) override
    {
        return Call("RepathFileLinks");
    }
};

class Layout : public IFileLayout
{
public:
    Layout() { LogCall("new layout"); }
    ~Layout() override { LogCall("delete layout"); }

    bool AssignTargetPaths(IFileMapping*, IFileLayoutContext*) override
    {
        return Call("AssignTargetPaths");
    }
};

/// The factory's creation: null or an exception where the fault says so.
template <class Object>
Object* Create()
{
    static int creations = 0;
    ++creations;
    ThrowWhen(fault == Fault::ThrowingCreation);
    if (fault == Fault::NullObject || (fault == Fault::NullObjectTheSecondTime && creations == 2))
        return nullptr;
    return new Object;
}

class ResolverFactory : public IFileLinkResolverFactory
{
public:
    ResolverFactory() { LogCall("new factory"); }
    ~ResolverFactory() override { LogCall("delete factory"); }
    IFileLinkResolver* CreateFileLinkResolver() override { return Create<Resolver>(); }
};

class LayoutFactory : public ISyncPluginFactory
{
public:
    LayoutFactory() { LogCall("new factory"); }
    ~LayoutFactory() override { LogCall("delete factory"); }
    IFileLayout* CreateFileLayout() override { return Create<Layout>(); }
};

#ifdef ZOO_VERSION_FUNCTION
std::uint64_t StatedVersion()
{
    ThrowWhen(fault == Fault::ThrowingVersion);
    ContractTerms terms = OwnContractTerms;
    if (fault == Fault::OtherCompiler) {
        terms.characterSize = 4;
        terms.layout = ObjectLayout::Microsoft;
        terms.runtime = RuntimeLibrary::Microsoft;
    }
    if (fault == Fault::UnknownCompiler) {
        terms.layout = ObjectLayout(9);
        terms.runtime = RuntimeLibrary(10);
    }
    return fault == Fault::GarbageVersion ? 0xDEADBEEF : MakeContractStamp(terms);
}
#endif

template <class Factory>
Factory* MakeFactory()
{
    static int factories = 0;
    ++factories;
    ThrowWhen(fault == Fault::ThrowingFactory);
    if (fault == Fault::NullFactory || (fault == Fault::NullFactoryTheSecondTime && factories == 2))
        return nullptr;
    return new Factory;
}

} // namespace

#ifdef ZOO_STATES_VERSION
SYNCPLUGIN_EXPORT_CONTRACT_VERSION();
#endif

#ifdef ZOO_VERSION_FUNCTION
SYNCPLUGIN_EXPORT std::uint64_t GetSyncPluginContractVersion()
{
    return StatedVersion();
}
#endif

SYNCPLUGIN_EXPORT IFileLinkResolverFactory* CreateFileLinkResolverFactory()
{
    return MakeFactory<ResolverFactory>();
}

SYNCPLUGIN_EXPORT ISyncPluginFactory* CreateSyncPluginFactory()
{
    return MakeFactory<LayoutFactory>();
}
