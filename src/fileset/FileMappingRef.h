// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "support/Platform.h"
#include "syncplugin/IFileMapping.h"

#include <QtCore/QList>
#include <QtCore/QSet>
#include <QtCore/QString>

#include <memory>

namespace Halvern::FileLink {

class LinkGraph;

/// A node of the link tree: one mapping, reached through one link, with the files that it links
/// below it. It is also what plug-ins see of a mapping.
///
/// Children are made when somebody asks for them, from the graph that the tree was made with. A
/// node whose link closes a cycle has none. A child's parent pointer is valid while the tree is.
class FileMappingRef : public SyncPlugin::IFileMapping
{
public:
    using Pointer = std::shared_ptr<FileMappingRef>;
    using WideChar = SyncPlugin::WideChar;

    /// `mapping` may be empty: such a node answers empty strings, false and 0.
    FileMappingRef(QString linkPath, QString refId, FileMappingPointer mapping);
    ~FileMappingRef() override;
    FileMappingRef(const FileMappingRef&) = delete;
    FileMappingRef& operator=(const FileMappingRef&) = delete;

    const FileMappingPointer& Mapping() const { return m_mapping; }
    QString SourceFile() const;
    QString TargetFile() const;
    const QString& LinkPath() const { return m_linkPath; }
    const QString& RefId() const { return m_refId; }
    const QList<Pointer>& Children();
    /// The same for a caller who knows the path numbers of this node and of those above it.
    const QList<Pointer>& Children(const QSet<int>& pathsAbove);
    /// Frees the nodes below, for a caller who alone knows of them. They grow again when asked for.
    void ForgetChildren();
    int PathNumber() const { return m_pathNumber; }
    FileMappingRef* Parent() const { return m_parent; }
    FileMappingRef* Root();
    /// The link through which this node was reached closes a cycle.
    bool ClosesCycle() const { return m_closesCycle; }
    /// Appends a node that has no parent yet, with what is below it.
    void AddChild(const Pointer& child);
    /// Lets the node grow its children from a graph.
    void SetGraph(std::shared_ptr<const LinkGraph> graph);
    const std::shared_ptr<const LinkGraph>& Graph() const { return m_graph; }
    /// Of a root: the folder against which relative target paths are resolved.
    void SetTargetBaseFolder(const QString& folder) { m_targetBaseFolder = folder; }
    /// The QString form of the operation below.
    QString ResolveTargetPath(const QString& path);

    unsigned int GetRefId(WideChar* buffer, int size) override;
    unsigned int GetSourceFile(WideChar* buffer, int size) override;
    unsigned int GetTargetFile(WideChar* buffer, int size) override;
    unsigned int GetTargetPath(WideChar* buffer, int size) override;
    bool SetTargetFile(const WideChar* path, bool replace) override;
    unsigned int ResolveTargetPath(const WideChar* path, WideChar* buffer, int size) override;
    bool HasTargetFile() override;
    bool ExistsInTarget() override;
    unsigned int GetTargetRootFolder(WideChar* buffer, int size) override;
    bool HasFlag(unsigned int flags) override;
    unsigned int GetFlag() override;
    void SetFlag(unsigned int flags, bool on) override;
    SyncPlugin::IFileMappingIterator* GetChildren() override;
    SyncPlugin::IFileMapping* GetParent() override;
    SyncPlugin::IFileMapping* GetRoot() override;
    bool ChangeSourceFile(const WideChar* path) override;

private:
    bool CanGrow() const { return !m_grown && m_graph && m_mapping && !m_closesCycle; }
    template <typename IsAbove>
    void GrowChildren(IsAbove isAbove);
    bool IsAncestorPath(int pathNumber) const;
    static void DestroyOneByOne(QList<Pointer> pending);

    /// Number of the node's path in the graph; -1 without a graph.
    int m_pathNumber = -1;
    QString m_refId;
    QString m_linkPath;
    FileMappingPointer m_mapping;
    QString m_targetBaseFolder;
    QList<Pointer> m_children;
    FileMappingRef* m_parent = nullptr;
    /// The root when this node was added: a way up in one step, from whatever depth.
    FileMappingRef* m_top = nullptr;
    std::shared_ptr<const LinkGraph> m_graph;
    bool m_grown = false;
    bool m_closesCycle = false;
};

/// Iterates over a copy of a node's children, which it keeps alive.
class FileMappingRefIterator : public SyncPlugin::IFileMappingIterator
{
public:
    explicit FileMappingRefIterator(QList<FileMappingRef::Pointer> children);

    bool HasNext() override;
    SyncPlugin::IFileMapping* Next() override;
    void ToFront() override;

private:
    const QList<FileMappingRef::Pointer> m_children;
    qsizetype m_next = 0;
};

/// Answers a string to a plug-in: see IFileMapping for the convention.
unsigned int AnswerString(const QString& text, SyncPlugin::WideChar* buffer, int size);
/// A string of a plug-in; null counts as empty.
QString FromPluginString(const SyncPlugin::WideChar* text);

} // namespace Halvern::FileLink
