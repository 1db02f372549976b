// SPDX-License-Identifier: Apache-2.0

#include "isolation/MappingServer.h"

#include <algorithm>
#include <memory>

namespace Halvern::Isolation {

using SyncPlugin::IFileMapping;
using SyncPlugin::IFileMappingIterator;
using SyncPlugin::WideChar;

namespace {

/// The largest buffer that is filled for a layout: paths have at most 32,767 characters.
constexpr int MaxBuffer = 1 << 16;

template <class Value>
QByteArray Result(const Value& value)
{
    return (MessageWriter(Message::MappingResult) << value).Bytes();
}

/// Asks an operation that fills a buffer, with a buffer like the caller's. The answer: its number,
/// and what stands in the buffer.
template <class Ask>
QByteArray Text(MessageReader& call, Ask ask)
{
    const bool hasBuffer = call.Take<bool>();
    const int size = std::min(call.Take<int>(), MaxBuffer);
    if (!hasBuffer || size <= 0)
        return (MessageWriter(Message::MappingResult)
                << ask(static_cast<WideChar*>(nullptr), hasBuffer ? size : 0) << QString())
            .Bytes();
    std::vector<WideChar> buffer(std::size_t(size) + 1);
    const unsigned int written = ask(buffer.data(), size);
    return (MessageWriter(Message::MappingResult) << written << ToText(buffer.data())).Bytes();
}

} // namespace

std::uint32_t MappingServer::NumberOf(IFileMapping* mapping)
{
    if (!mapping)
        return NoMapping;
    const auto [entry, isNew] = m_numbers.try_emplace(mapping, std::uint32_t(m_mappings.size()));
    if (isNew)
        m_mappings.push_back(mapping);
    return entry->second;
}

QByteArray MappingServer::Answer(MessageReader& call)
{
    const auto number = call.Take<std::uint32_t>();
    const auto operation = call.Take<MappingOperation>();
    if (number >= m_mappings.size())
        return MessageWriter(Message::MappingResult).Bytes();
    return Answer(*m_mappings[number], operation, call);
}

QByteArray MappingServer::Answer(IFileMapping& mapping, MappingOperation operation,
                                 MessageReader& call)
{
    const auto text = [&](unsigned int (IFileMapping::*ask)(WideChar*, int)) {
        return Text(call, [&](WideChar* buffer, int size) { return (mapping.*ask)(buffer, size); });
    };
    const auto path = [&] { return ToWide(call.Take<QString>()); };
    switch (operation) {
    case MappingOperation::RefId:
        return text(&IFileMapping::GetRefId);
    case MappingOperation::SourceFile:
        return text(&IFileMapping::GetSourceFile);
    case MappingOperation::TargetFile:
        return text(&IFileMapping::GetTargetFile);
    case MappingOperation::TargetPath:
        return text(&IFileMapping::GetTargetPath);
    case MappingOperation::TargetRootFolder:
        return text(&IFileMapping::GetTargetRootFolder);
    case MappingOperation::SetTargetFile: {
        const auto target = path();
        return Result(mapping.SetTargetFile(target.c_str(), call.Take<bool>()));
    }
    case MappingOperation::ResolveTargetPath: {
        const auto relative = path();
        return Text(call, [&](WideChar* buffer, int size) {
            return mapping.ResolveTargetPath(relative.c_str(), buffer, size);
        });
    }
    case MappingOperation::HasTargetFile:
        return Result(mapping.HasTargetFile());
    case MappingOperation::ExistsInTarget:
        return Result(mapping.ExistsInTarget());
    case MappingOperation::HasFlag:
        return Result(mapping.HasFlag(call.Take<unsigned int>()));
    case MappingOperation::GetFlag:
        return Result(mapping.GetFlag());
    case MappingOperation::SetFlag: {
        const auto flags = call.Take<unsigned int>();
        mapping.SetFlag(flags, call.Take<bool>());
        return MessageWriter(Message::MappingResult).Bytes();
    }
    case MappingOperation::Children:
        return Children(mapping);
    case MappingOperation::Parent:
        return Result(NumberOf(mapping.GetParent()));
    case MappingOperation::Root:
        return Result(NumberOf(mapping.GetRoot()));
    case MappingOperation::ChangeSourceFile:
        return Result(mapping.ChangeSourceFile(path().c_str()));
    }
    return MessageWriter(Message::MappingResult).Bytes();
}

QByteArray MappingServer::Children(IFileMapping& mapping)
{
    const std::unique_ptr<IFileMappingIterator> children(mapping.GetChildren());
    QList<std::uint32_t> numbers;
    while (children && children->HasNext())
        numbers.append(NumberOf(children->Next()));
    return Result(numbers);
}

} // namespace Halvern::Isolation
