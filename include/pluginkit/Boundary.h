// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "syncplugin/IFileLayout.h"
#include "syncplugin/IFileLinkResolver.h"

#include <memory>
#include <string_view>
#include <type_traits>

namespace Halvern::PluginKit {

/// Something to do: anything that is called without arguments, a plain function as well. Neither
/// copied nor kept, and without memory of its own, so that naming it cannot fail.
class Work
{
public:
    template <typename Callable,
              typename = std::enable_if_t<std::is_invocable_v<Callable&> &&
                                          !std::is_same_v<std::remove_cvref_t<Callable>, Work>>>
    Work(Callable&& callable) noexcept
    {
        using Target = std::remove_reference_t<Callable>;
        if constexpr (std::is_function_v<Target>) {
            m_function = reinterpret_cast<void (*)()>(&callable);
            m_call = [](const Work& work) { (*reinterpret_cast<Target*>(work.m_function))(); };
        } else {
            m_object = const_cast<void*>(static_cast<const void*>(std::addressof(callable)));
            m_call = [](const Work& work) { (*static_cast<Target*>(work.m_object))(); };
        }
    }
    void operator()() const { m_call(*this); }

private:
    /// One of the two.
    void* m_object = nullptr;
    void (*m_function)() = nullptr;
    void (*m_call)(const Work&) = nullptr;
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
