// SPDX-License-Identifier: Apache-2.0

#include "LinkedFiles.h"

#include "KitNames.h"
#include "base/FileStatus.h"
#include "pluginkit/Utf.h"
#include "syncplugin/ReferenceIds.h"

#include <map>
#include <memory>

namespace Halvern::Formats::Layout {

namespace {

using SyncPlugin::IFileMapping;
using SyncPlugin::IFileMappingIterator;
using SyncPlugin::WideChar;
using Getter = unsigned int (IFileMapping::*)(WideChar* buffer, int size);

/// Nothing for text that is not valid.
std::optional<std::string> TextOf(IFileMapping& node, Getter getter)
{
    const unsigned int length = (node.*getter)(nullptr, 0);
    WideString text(length + 1, WideChar(0));
    text.resize((node.*getter)(text.data(), static_cast<int>(text.size())));
    return ToUtf8(text);
}

std::optional<TreePath> PathOf(IFileMapping& node, Getter getter)
{
    const std::optional<std::string> text = TextOf(node, getter);
    return text ? TreePath::Parse(*text) : std::nullopt;
}

LinkedFile FileOf(IFileMapping& node, TreePath source)
{
    LinkedFile file;
    file.isMissing = !Base::Exists(PathFromUtf8(source.Text()));
    file.source = std::move(source);
    file.target = PathOf(node, &IFileMapping::GetTargetFile);
    const unsigned int flags = node.GetFlag();
    file.isFixed = (flags & SyncPlugin::MappingSelected) != 0;
    file.wasPlaced = file.target.has_value();
    file.mustMove = (flags & SyncPlugin::MappingCollision) != 0 &&
                    (flags & SyncPlugin::MappingRenameOnCollision) != 0;
    file.existsInTarget = file.mustMove && node.ExistsInTarget();
    file.node = &node;
    return file;
}

/// Walks breadth first, so that a file stands after one that links it.
class Collector
{
public:
    explicit Collector(LinkedFiles& result) : m_result(result) {}

    bool Add(IFileMapping& node) { return IndexOf(node).has_value(); }

    void CollectBelow(std::size_t owner)
    {
        const std::unique_ptr<IFileMappingIterator> children(
            m_result.files[owner].node->GetChildren());
        while (children && children->HasNext())
            if (IFileMapping* const child = children->Next())
                AddLink(owner, *child);
    }

private:
    std::optional<std::size_t> IndexOf(IFileMapping& node)
    {
        if ((node.GetFlag() & (SyncPlugin::MappingNotFilePath | SyncPlugin::MappingFolder)) != 0)
            return {};
        std::optional<TreePath> source = PathOf(node, &IFileMapping::GetSourceFile);
        if (!source || source->parts.empty())
            return {};
        const auto [known, isNew] = m_indexes.emplace(source->Text(), m_result.files.size());
        if (isNew)
            m_result.files.push_back(FileOf(node, std::move(*source)));
        return known->second;
    }

    void AddLink(std::size_t owner, IFileMapping& child)
    {
        const std::optional<std::size_t> member = IndexOf(child);
        const std::optional<std::string> id = TextOf(child, &IFileMapping::GetRefId);
        if (!member || !id || *member == owner)
            return;
        if (id->starts_with(SyncPlugin::CompanionMark))
            m_result.bonds.push_back({owner, *member, {}});
        else if (id->starts_with(SyncPlugin::SetMark))
            m_result.bonds.push_back({owner, *member, id->substr(0, id->rfind('#'))});
    }

    LinkedFiles& m_result;
    std::map<std::string, std::size_t> m_indexes;
};

} // namespace

std::optional<LinkedFiles> CollectLinkedFiles(IFileMapping& top)
{
    LinkedFiles result;
    Collector collector(result);
    if (!collector.Add(top) || !result.files.front().target)
        return {};
    result.files.front().isFixed = true;
    // A node that closes a cycle shows nothing below it, but then its file is known by a node
    // above.
    for (std::size_t index = 0; index < result.files.size(); ++index)
        collector.CollectBelow(index);
    return result;
}

void ApplyTargets(const LinkedFiles& linked)
{
    for (const LinkedFile& file : linked.files) {
        if (!file.node || !file.target)
            continue;
        if (PathOf(*file.node, &IFileMapping::GetTargetFile) != file.target) {
            file.node->SetTargetFile(ToUtf16Lossy(file.target->Text()).c_str(), true);
            file.node->SetFlag(SyncPlugin::MappingRenameOnCollision, false);
        }
        if (file.keepsName)
            file.node->SetFlag(SyncPlugin::MappingKeepTargetName, true);
    }
}

} // namespace Halvern::Formats::Layout
