// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "isolation/HostChannel.h"

#include "syncplugin/IFileMapping.h"

#include <map>
#include <memory>

namespace Halvern::Isolation {

class RemoteMapping;

/// The mappings of one call of a layout: one object for each, as the layout expects it.
class RemoteMappings
{
public:
    explicit RemoteMappings(HostChannel& channel) : m_channel(channel) {}

    /// Null for NoMapping.
    SyncPlugin::IFileMapping* Mapping(std::uint32_t number);
    MessageReader Ask(const QByteArray& call);

private:
    HostChannel& m_channel;
    std::map<std::uint32_t, std::unique_ptr<RemoteMapping>> m_mappings;
};

/// A mapping of the module, in the process of a layout.
class RemoteMapping : public SyncPlugin::IFileMapping
{
public:
    RemoteMapping(RemoteMappings& all, std::uint32_t number) : m_all(all), m_number(number) {}

    unsigned int GetRefId(SyncPlugin::WideChar* buffer, int size) override;
    unsigned int GetSourceFile(SyncPlugin::WideChar* buffer, int size) override;
    unsigned int GetTargetFile(SyncPlugin::WideChar* buffer, int size) override;
    unsigned int GetTargetPath(SyncPlugin::WideChar* buffer, int size) override;
    bool SetTargetFile(const SyncPlugin::WideChar* path, bool replace) override;
    unsigned int ResolveTargetPath(const SyncPlugin::WideChar* path, SyncPlugin::WideChar* buffer,
                                   int size) override;
    bool HasTargetFile() override;
    bool ExistsInTarget() override;
    unsigned int GetTargetRootFolder(SyncPlugin::WideChar* buffer, int size) override;
    bool HasFlag(unsigned int flags) override;
    unsigned int GetFlag() override;
    void SetFlag(unsigned int flags, bool on) override;
    [[nodiscard]] SyncPlugin::IFileMappingIterator* GetChildren() override;
    SyncPlugin::IFileMapping* GetParent() override;
    SyncPlugin::IFileMapping* GetRoot() override;
    bool ChangeSourceFile(const SyncPlugin::WideChar* path) override;

private:
    MessageWriter Call(MappingOperation operation) const;
    unsigned int Text(MessageWriter& call, SyncPlugin::WideChar* buffer, int size);
    unsigned int Text(MappingOperation operation, SyncPlugin::WideChar* buffer, int size);

    RemoteMappings& m_all;
    std::uint32_t m_number;
};

} // namespace Halvern::Isolation
