// SPDX-License-Identifier: Apache-2.0

#include "isolation/RemoteMapping.h"

#include <algorithm>
#include <utility>

namespace Halvern::Isolation {

using SyncPlugin::IFileMapping;
using SyncPlugin::IFileMappingIterator;
using SyncPlugin::WideChar;

namespace {

class RemoteChildren : public IFileMappingIterator
{
public:
    RemoteChildren(RemoteMappings& all, QList<std::uint32_t> numbers)
        : m_all(all), m_numbers(std::move(numbers))
    {}

    bool HasNext() override { return m_next < m_numbers.size(); }
    IFileMapping* Next() override
    {
        return HasNext() ? m_all.Mapping(m_numbers[m_next++]) : nullptr;
    }
    void ToFront() override { m_next = 0; }

private:
    RemoteMappings& m_all;
    QList<std::uint32_t> m_numbers;
    qsizetype m_next = 0;
};

} // namespace

IFileMapping* RemoteMappings::Mapping(std::uint32_t number)
{
    if (number == NoMapping)
        return nullptr;
    std::unique_ptr<RemoteMapping>& mapping = m_mappings[number];
    if (!mapping)
        mapping = std::make_unique<RemoteMapping>(*this, number);
    return mapping.get();
}

MessageReader RemoteMappings::Ask(const QByteArray& call)
{
    m_channel.Send(call);
    return m_channel.Receive();
}

MessageWriter RemoteMapping::Call(MappingOperation operation) const
{
    MessageWriter call(Message::MappingCall);
    call << m_number << operation;
    return call;
}

unsigned int RemoteMapping::Text(MessageWriter& call, WideChar* buffer, int size)
{
    call << (buffer != nullptr) << size;
    MessageReader result = m_all.Ask(call.Bytes());
    const auto written = result.Take<unsigned int>();
    const QString text = result.Take<QString>();
    if (!buffer || size <= 0)
        return written;
    const auto end = std::min<qsizetype>(text.size(), size - 1);
    std::copy_n(reinterpret_cast<const WideChar*>(text.utf16()), end, buffer);
    buffer[end] = 0;
    return written;
}

unsigned int RemoteMapping::Text(MappingOperation operation, WideChar* buffer, int size)
{
    MessageWriter call = Call(operation);
    return Text(call, buffer, size);
}

unsigned int RemoteMapping::GetRefId(WideChar* buffer, int size)
{
    return Text(MappingOperation::RefId, buffer, size);
}

unsigned int RemoteMapping::GetSourceFile(WideChar* buffer, int size)
{
    return Text(MappingOperation::SourceFile, buffer, size);
}

unsigned int RemoteMapping::GetTargetFile(WideChar* buffer, int size)
{
    return Text(MappingOperation::TargetFile, buffer, size);
}

unsigned int RemoteMapping::GetTargetPath(WideChar* buffer, int size)
{
    return Text(MappingOperation::TargetPath, buffer, size);
}

unsigned int RemoteMapping::GetTargetRootFolder(WideChar* buffer, int size)
{
    return Text(MappingOperation::TargetRootFolder, buffer, size);
}

bool RemoteMapping::SetTargetFile(const WideChar* path, bool replace)
{
    MessageWriter call = Call(MappingOperation::SetTargetFile);
    return m_all.Ask((call << ToText(path) << replace).Bytes()).Take<bool>();
}

unsigned int RemoteMapping::ResolveTargetPath(const WideChar* path, WideChar* buffer, int size)
{
    MessageWriter call = Call(MappingOperation::ResolveTargetPath);
    return Text(call << ToText(path), buffer, size);
}

bool RemoteMapping::HasTargetFile()
{
    return m_all.Ask(Call(MappingOperation::HasTargetFile).Bytes()).Take<bool>();
}

bool RemoteMapping::ExistsInTarget()
{
    return m_all.Ask(Call(MappingOperation::ExistsInTarget).Bytes()).Take<bool>();
}

bool RemoteMapping::HasFlag(unsigned int flags)
{
    MessageWriter call = Call(MappingOperation::HasFlag);
    return m_all.Ask((call << flags).Bytes()).Take<bool>();
}

unsigned int RemoteMapping::GetFlag()
{
    return m_all.Ask(Call(MappingOperation::GetFlag).Bytes()).Take<unsigned int>();
}

void RemoteMapping::SetFlag(unsigned int flags, bool on)
{
    MessageWriter call = Call(MappingOperation::SetFlag);
    (void)m_all.Ask((call << flags << on).Bytes());
}

IFileMappingIterator* RemoteMapping::GetChildren()
{
    MessageReader result = m_all.Ask(Call(MappingOperation::Children).Bytes());
    return new RemoteChildren(m_all, result.Take<QList<std::uint32_t>>());
}

IFileMapping* RemoteMapping::GetParent()
{
    return m_all.Mapping(m_all.Ask(Call(MappingOperation::Parent).Bytes()).Take<std::uint32_t>());
}

IFileMapping* RemoteMapping::GetRoot()
{
    return m_all.Mapping(m_all.Ask(Call(MappingOperation::Root).Bytes()).Take<std::uint32_t>());
}

bool RemoteMapping::ChangeSourceFile(const WideChar* path)
{
    MessageWriter call = Call(MappingOperation::ChangeSourceFile);
    return m_all.Ask((call << ToText(path)).Bytes()).Take<bool>();
}

} // namespace Halvern::Isolation
