// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "syncplugin/IFileLayout.h"
#include "syncplugin/IFileLinkResolver.h"

#include <memory>
#include <string_view>

namespace Halvern::PluginKit {

/// Something to do: anything that is called without arguments. Neither copied nor kept, and without
/// memory of its own, so that naming it cannot fail.
class Work
{
public:
    template <typename Callable>
    Work(const Callable& callable) noexcept
        : m_callable(std::addressof(callable)),
          m_call([](const void* object) { (*static_cast<const Callable*>(object))(); })
    {}
    void operator()() const { m_call(m_callable); }

private:
    const void* m_callable;
    void (*m_call)(const void*);
};

// No exception may leave a plug-in. Whoever implements the contract without DocumentResolver lets
// one of these do all the work of a call:
//
//     bool MyLayout::AssignTargetPaths(IFileMapping* mapping, IFileLayoutContext* context)
//     {
//         return RunGuarded(context, "lay out the links of", mapping, [&] { ... });
//     }
//
// Whatever the work throws ends here: the reason is written to the context's logger, if there is
// one, as "Failed to <action> <file>: <reason> (byte <position>)", and the result is false. True
// when it threw nothing. Every pointer may be null.

bool RunGuarded(SyncPlugin::IFileLinkResolverContext* context, std::string_view action,
                const SyncPlugin::WideChar* file, Work work) noexcept;
/// The file is the source of `mapping`.
bool RunGuarded(SyncPlugin::IFileLayoutContext* context, std::string_view action,
                SyncPlugin::IFileMapping* mapping, Work work) noexcept;

} // namespace Halvern::PluginKit
