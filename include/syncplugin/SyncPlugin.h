// SPDX-License-Identifier: Apache-2.0

#pragma once

/// Everything a plug-in author includes. A plug-in library exports, unmangled, one or both of
///
///     SYNCPLUGIN_EXPORT Halvern::SyncPlugin::IFileLinkResolverFactory*
///     CreateFileLinkResolverFactory();
///     SYNCPLUGIN_EXPORT Halvern::SyncPlugin::ISyncPluginFactory* CreateSyncPluginFactory();
///
/// and, once, what it was built with:
///
///     SYNCPLUGIN_EXPORT_CONTRACT_VERSION();
///
/// It is described by a registration file "*.syncplugin". It must be built with the compiler object
/// layout and the shared runtime library of the host.

#ifdef _MSC_VER
#error "Visual C++ lays objects out differently: use the mingw-w64 GCC, see docs/plugin-authors.md"
#endif

#include "syncplugin/ContractVersion.h"
#include "syncplugin/IFileLayout.h"
#include "syncplugin/IFileLinkResolver.h"
#include "syncplugin/ReferenceIds.h"

#include <cstdint>

#ifdef _WIN32
#define SYNCPLUGIN_EXPORT extern "C" __declspec(dllexport)
#else
#define SYNCPLUGIN_EXPORT extern "C" __attribute__((visibility("default")))
#endif

/// In one source of a plug-in, outside of namespaces: exports "GetSyncPluginContractVersion", a
/// plain C function, by which the host tells that a library was built against other headers or with
/// another compiler before it touches an object of it. Such a library is refused with a sentence;
/// one that says nothing is taken for one of version 1 and may crash.
///
/// The number is a constant of the library itself: an inline variable could be the host's.
#define SYNCPLUGIN_EXPORT_CONTRACT_VERSION()                                                       \
    SYNCPLUGIN_EXPORT std::uint64_t GetSyncPluginContractVersion()                                 \
    {                                                                                              \
        constexpr std::uint64_t stamp =                                                            \
            ::Halvern::SyncPlugin::MakeContractStamp(::Halvern::SyncPlugin::OwnContractTerms);     \
        return stamp;                                                                              \
    }                                                                                              \
    static_assert(true, "a semicolon ends it")
