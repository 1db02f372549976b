// SPDX-License-Identifier: Apache-2.0

#pragma once

/// Everything a plug-in author includes. A plug-in library exports, unmangled, one or both of
///
///     SYNCPLUGIN_EXPORT Halvern::SyncPlugin::IFileLinkResolverFactory*
///     CreateFileLinkResolverFactory();
///     SYNCPLUGIN_EXPORT Halvern::SyncPlugin::ISyncPluginFactory* CreateSyncPluginFactory();
///
/// and is described by a registration file "*.syncplugin". It must be built with the compiler
/// object layout and the shared runtime library of the host.

#ifdef _MSC_VER
#error "Visual C++ lays objects out differently: use the mingw-w64 GCC, see docs/plugin-authors.md"
#endif

#include "syncplugin/IFileLayout.h"
#include "syncplugin/IFileLinkResolver.h"

#ifdef _WIN32
#define SYNCPLUGIN_EXPORT extern "C" __declspec(dllexport)
#else
#define SYNCPLUGIN_EXPORT extern "C" __attribute__((visibility("default")))
#endif
