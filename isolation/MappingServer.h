// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "isolation/Messages.h"

#include "syncplugin/IFileMapping.h"

#include <unordered_map>
#include <vector>

namespace Halvern::Isolation {

/// Answers what a layout asks about the mappings of one call. They have numbers in the order in
/// which they were first named: RootMapping is the one that the layout is called with.
class MappingServer
{
public:
    explicit MappingServer(SyncPlugin::IFileMapping* root) { NumberOf(root); }

    /// A MappingResult. A number that was never given out has empty answers.
    QByteArray Answer(MessageReader& call);

private:
    std::uint32_t NumberOf(SyncPlugin::IFileMapping* mapping);
    QByteArray Answer(SyncPlugin::IFileMapping& mapping, MappingOperation operation,
                      MessageReader& call);
    QByteArray Children(SyncPlugin::IFileMapping& mapping);

    std::vector<SyncPlugin::IFileMapping*> m_mappings;
    std::unordered_map<SyncPlugin::IFileMapping*, std::uint32_t> m_numbers;
};

} // namespace Halvern::Isolation
