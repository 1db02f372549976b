// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "syncplugin/FileLinkInfo.h"

namespace Halvern::SyncPlugin {

/// Flags of a mapping as plug-ins number them. `HasFlag` accepts all of them; `SetFlag` ignores
/// those marked "read only"; `GetFlag` reports only those marked "reported".
enum MappingFlag : unsigned int
{
    MappingSelected = 0x1,                ///< came from the user's selection; read only, reported
    MappingFolder = 0x2,                  ///< the source is a folder; reported
    MappingNestedFolder = 0x4,            ///< a folder inside a selected folder; reported
    MappingUnchanged = 0x8,               ///< as copied earlier; read only, reported
    MappingSameSourceAndTarget = 0x10,    ///< nothing to copy
    MappingCollision = 0x20,              ///< the target is taken; read only, reported
    MappingSourceMissing = 0x40,          ///< no source file; read only, reported
    MappingNotFilePath = 0x80,            ///< the link names no local file; reported
    MappingRenameOnCollision = 0x100,     ///< a taken target gets a new name; reported
    MappingSkipFileLinks = 0x200,         ///< the file's links are not followed; reported
    MappingFileLinksNotSupported = 0x400, ///< the file's type has no links
    MappingKeepTargetName = 0x800,        ///< the target is never renamed
};

class IFileMapping;

/// Walks the children of a mapping. Whoever received it deletes it. The mappings it returns stay
/// owned by the host and are valid during the plug-in call.
class IFileMappingIterator
{
public:
    virtual ~IFileMappingIterator() = default;
    virtual bool HasNext() = 0;
    /// Null after the last child, however often it is asked.
    virtual IFileMapping* Next() = 0;
    /// Goes back to before the first child.
    virtual void ToFront() = 0;
};

/// A file of the import and its place in the tree of links, as a layout plug-in sees it.
///
/// Operations that answer a string take a buffer and its capacity in characters, the terminating
/// zero included. A null buffer asks for the length only; a capacity of 0 or less gives 0; a buffer
/// that is too small receives the beginning of the string and a zero. The result is the number of
/// characters written (the length, for a null buffer) without the zero.
/// DO NOT CHANGE THE ORDER: it is the order of virtual slots.
class IFileMapping
{
public:
    virtual ~IFileMapping() = default;
    /// The reference id of the link through which this mapping was reached; empty on a root.
    virtual unsigned int GetRefId(WideChar* buffer, int size) = 0;
    virtual unsigned int GetSourceFile(WideChar* buffer, int size) = 0;
    virtual unsigned int GetTargetFile(WideChar* buffer, int size) = 0;
    /// The same answer as GetTargetFile.
    virtual unsigned int GetTargetPath(WideChar* buffer, int size) = 0;
    /// Sets the target, resolved as by ResolveTargetPath. With `replace` false a target that is
    /// already set stays and the result is false.
    virtual bool SetTargetFile(const WideChar* path, bool replace) = 0;
    /// Makes a relative path absolute under the target root folder; absolute paths stay.
    virtual unsigned int ResolveTargetPath(const WideChar* path, WideChar* buffer, int size) = 0;
    virtual bool HasTargetFile() = 0;
    virtual bool ExistsInTarget() = 0;
    virtual unsigned int GetTargetRootFolder(WideChar* buffer, int size) = 0;
    /// True when every bit of `flags` (MappingFlag) is set.
    virtual bool HasFlag(unsigned int flags) = 0;
    virtual unsigned int GetFlag() = 0;
    virtual void SetFlag(unsigned int flags, bool on) = 0;
    /// A new iterator before the first child; the caller deletes it.
    [[nodiscard]] virtual IFileMappingIterator* GetChildren() = 0;
    /// Null on a root.
    virtual IFileMapping* GetParent() = 0;
    virtual IFileMapping* GetRoot() = 0;
    /// Imports another file in place of the current source, and changes every link that names it.
    virtual bool ChangeSourceFile(const WideChar* path) = 0;
};

} // namespace Halvern::SyncPlugin
