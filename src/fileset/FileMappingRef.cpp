// SPDX-License-Identifier: Apache-2.0

#include "fileset/FileMappingRef.h"

#include "fileset/FileSetImp.h"
#include "fileset/LinkGraph.h"
#include "support/Logging.h"
#include "support/PathUtilities.h"

#include <QtCore/QDir>
#include <QtCore/QFileInfo>

#include <algorithm>
#include <utility>

namespace Halvern::FileLink {

namespace {

constexpr char LogSourceFile[] = "FileSetImp.cpp";

struct FlagPair
{
    unsigned int plugin;
    FileMappingFlag mapping;
    bool settable;
    /// The way back is narrower than the way in.
    bool reported;
};

// DO NOT CHANGE THESE VALUES: plug-ins are compiled with them.
constexpr FlagPair FlagPairs[] = {
    {SyncPlugin::MappingSelected, FileMapping::Selected, false, true},
    {SyncPlugin::MappingFolder, FileMapping::Folder, true, true},
    {SyncPlugin::MappingNestedFolder, FileMapping::NestedFolder, true, true},
    {SyncPlugin::MappingUnchanged, FileMapping::Unchanged, false, true},
    {SyncPlugin::MappingSameSourceAndTarget, FileMapping::SameSourceAndTarget, true, false},
    {SyncPlugin::MappingCollision, FileMapping::Collision, false, true},
    {SyncPlugin::MappingSourceMissing, FileMapping::SourceMissing, false, true},
    {SyncPlugin::MappingNotFilePath, FileMapping::NotFilePath, true, true},
    {SyncPlugin::MappingRenameOnCollision, FileMapping::RenameOnCollision, true, true},
    {SyncPlugin::MappingSkipFileLinks, FileMapping::SkipFileLinks, true, true},
    {SyncPlugin::MappingFileLinksNotSupported, FileMapping::FileLinksNotSupported, true, false},
    {SyncPlugin::MappingKeepTargetName, FileMapping::KeepTargetName, true, false},
};

FileMappingFlag FromPluginFlags(unsigned int flags, bool onlySettable)
{
    FileMappingFlag result = FileMapping::NoFlag;
    for (const FlagPair& pair : FlagPairs)
        if ((flags & pair.plugin) && (pair.settable || !onlySettable))
            result |= pair.mapping;
    return result;
}

unsigned int ToPluginFlags(FileMappingFlag flags)
{
    unsigned int result = 0;
    for (const FlagPair& pair : FlagPairs)
        if (pair.reported && (flags & pair.mapping))
            result |= pair.plugin;
    return result;
}

} // namespace

unsigned int AnswerString(const QString& text, SyncPlugin::WideChar* buffer, int size)
{
    const int length = int(text.size());
    if (!buffer)
        return unsigned(length);
    if (size <= 0)
        return 0;
    const int count = std::min(length, size - 1);
    std::copy_n(text.utf16(), count, buffer);
    buffer[count] = 0;
    return unsigned(count);
}

QString FromPluginString(const SyncPlugin::WideChar* text)
{
    // Not fromUtf16, which takes a byte order mark away and replaces lone surrogates: both may
    // stand in file names.
    return text ? QString(reinterpret_cast<const QChar*>(text)) : QString();
}

FileMappingRef::FileMappingRef(QString linkPath, QString refId, FileMappingPointer mapping)
    : m_refId(std::move(refId)), m_linkPath(std::move(linkPath)), m_mapping(std::move(mapping))
{}

FileMappingRef::~FileMappingRef()
{
    DestroyOneByOne(std::move(m_children));
}

/// A long chain of links would overflow the stack if each node destroyed the next.
void FileMappingRef::DestroyOneByOne(QList<Pointer> pending)
{
    while (!pending.isEmpty()) {
        const Pointer node = pending.takeLast();
        if (node.use_count() == 1) {
            pending.append(std::move(node->m_children));
            node->m_children.clear();
        }
    }
}

QString FileMappingRef::SourceFile() const
{
    return m_mapping ? m_mapping->GetSourceFile() : QString();
}

QString FileMappingRef::TargetFile() const
{
    return m_mapping ? m_mapping->GetTargetFile() : QString();
}

const QList<FileMappingRef::Pointer>& FileMappingRef::Children()
{
    if (CanGrow())
        GrowChildren([this](int pathNumber) { return IsAncestorPath(pathNumber); });
    return m_children;
}

const QList<FileMappingRef::Pointer>& FileMappingRef::Children(const QSet<int>& pathsAbove)
{
    if (CanGrow())
        GrowChildren([&](int pathNumber) { return pathsAbove.contains(pathNumber); });
    return m_children;
}

void FileMappingRef::ForgetChildren()
{
    if (!m_grown)
        return;
    m_grown = false;
    DestroyOneByOne(std::move(m_children));
    m_children.clear();
}

template <typename IsAbove>
void FileMappingRef::GrowChildren(IsAbove isAbove)
{
    m_grown = true;
    for (const LinkGraph::Edge& edge : m_graph->LinksOf(m_mapping.get())) {
        const Pointer child =
            std::make_shared<FileMappingRef>(edge.linkPath, edge.refId, edge.target);
        child->SetGraph(m_graph);
        child->m_closesCycle = isAbove(child->m_pathNumber);
        AddChild(child);
    }
}

bool FileMappingRef::IsAncestorPath(int pathNumber) const
{
    // Whatever stands between a file and its own repetition is in one cycle with it.
    for (const FileMappingRef* node = this;
         node && m_graph->AreInOneCycle(node->m_pathNumber, pathNumber); node = node->m_parent)
        if (node->m_pathNumber == pathNumber)
            return true;
    return false;
}

FileMappingRef* FileMappingRef::Root()
{
    FileMappingRef* node = this;
    // More than one step only where a tree was added to another.
    while (node->m_top)
        node = node->m_top;
    return node;
}

void FileMappingRef::AddChild(const Pointer& child)
{
    child->m_parent = this;
    child->m_top = m_top ? m_top : this;
    m_children.append(child);
}

void FileMappingRef::SetGraph(std::shared_ptr<const LinkGraph> graph)
{
    m_graph = std::move(graph);
    m_pathNumber = m_graph->PathNumberOf(m_mapping.get());
}

QString FileMappingRef::ResolveTargetPath(const QString& path)
{
    const QString& base = Root()->m_targetBaseFolder;
    if (path.isEmpty() || IsAbsolutePath(path) || base.isEmpty())
        return path;
    return QDir::cleanPath(QFileInfo(base + u'/' + path).absoluteFilePath());
}

unsigned int FileMappingRef::GetRefId(WideChar* buffer, int size)
{
    return AnswerString(m_refId, buffer, size);
}

unsigned int FileMappingRef::GetSourceFile(WideChar* buffer, int size)
{
    return AnswerString(SourceFile(), buffer, size);
}

unsigned int FileMappingRef::GetTargetFile(WideChar* buffer, int size)
{
    return AnswerString(TargetFile(), buffer, size);
}

unsigned int FileMappingRef::GetTargetPath(WideChar* buffer, int size)
{
    return AnswerString(TargetFile(), buffer, size);
}

bool FileMappingRef::SetTargetFile(const WideChar* path, bool replace)
{
    return m_mapping &&
           m_mapping->SetTargetFile(ResolveTargetPath(FromPluginString(path)), replace);
}

unsigned int FileMappingRef::ResolveTargetPath(const WideChar* path, WideChar* buffer, int size)
{
    return AnswerString(ResolveTargetPath(FromPluginString(path)), buffer, size);
}

bool FileMappingRef::HasTargetFile()
{
    return m_mapping && m_mapping->HasTargetFile();
}

bool FileMappingRef::ExistsInTarget()
{
    return m_mapping && m_mapping->ExistsInTarget();
}

unsigned int FileMappingRef::GetTargetRootFolder(WideChar* buffer, int size)
{
    return AnswerString(Root()->m_targetBaseFolder, buffer, size);
}

bool FileMappingRef::HasFlag(unsigned int flags)
{
    return m_mapping && m_mapping->HasFlag(FromPluginFlags(flags, false));
}

unsigned int FileMappingRef::GetFlag()
{
    return m_mapping ? ToPluginFlags(m_mapping->GetFlag()) : 0;
}

void FileMappingRef::SetFlag(unsigned int flags, bool on)
{
    if (m_mapping)
        m_mapping->SetFlag(FromPluginFlags(flags, true), on);
}

SyncPlugin::IFileMappingIterator* FileMappingRef::GetChildren()
{
    return new FileMappingRefIterator(Children());
}

SyncPlugin::IFileMapping* FileMappingRef::GetParent()
{
    return m_parent;
}

SyncPlugin::IFileMapping* FileMappingRef::GetRoot()
{
    return Root();
}

bool FileMappingRef::ChangeSourceFile(const WideChar* path)
{
    const QString newPath = FromPluginString(path);
    FileSetImp* const set = m_mapping ? FileSetImp::Of(m_mapping->GetFileSet()) : nullptr;
    if (newPath.isEmpty() || !set)
        return false;
    const QString oldPath = m_mapping->GetSourceFile();
    FILELINK_LOG(LogLevel::Info,
                 QStringLiteral("Changing source file from %1 to %2 and updating all links which "
                                "reference this source file")
                     .arg(oldPath)
                     .arg(newPath));
    set->ChangeSourceFileLinks(oldPath, newPath);
    m_mapping->SetSourceFile(newPath);
    return true;
}

FileMappingRefIterator::FileMappingRefIterator(QList<FileMappingRef::Pointer> children)
    : m_children(std::move(children))
{}

bool FileMappingRefIterator::HasNext()
{
    return m_next < m_children.size();
}

SyncPlugin::IFileMapping* FileMappingRefIterator::Next()
{
    return HasNext() ? m_children[m_next++].get() : nullptr;
}

void FileMappingRefIterator::ToFront()
{
    m_next = 0;
}

} // namespace Halvern::FileLink
