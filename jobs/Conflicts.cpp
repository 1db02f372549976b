// SPDX-License-Identifier: Apache-2.0

#include "Conflicts.h"

#include "Paths.h"

#include <QtCore/QHash>

#include <optional>

namespace Halvern::Jobs {

using FileLink::FileSet;
using SyncServices::FileMapping;

namespace {

/// Nothing is at the target because of this file, now or after the import.
bool HasNoPlace(const FileMapping& file)
{
    return !file.HasTargetFile() ||
           file.HasFlagAny(FileMapping::NotFilePath | FileMapping::SourceMissing);
}

bool StaysWhereItIs(const FileMapping& file)
{
    return file.HasFlagAny(FileMapping::NoCopy | FileMapping::Unchanged |
                           FileMapping::SameSourceAndTarget) ||
           file.HasFlag(FileMapping::Folder);
}

CollisionPolicy PolicyFor(const FileMapping& file, const ImportRequest& request)
{
    return file.HasFlag(FileMapping::Selected) ? request.selectedCollisions
                                               : request.linkedCollisions;
}

/// Who has which target, by the target in lower case.
class Owners
{
public:
    explicit Owners(const FileSet::FileMappingList& files)
    {
        // What is in place, or about to be made for the files in it, comes before what is copied.
        for (const auto& file : files)
            if (!HasNoPlace(*file) && StaysWhereItIs(*file) && HoldsTarget(*file))
                Add(*file);
    }

    /// The other file that has the target; null when it is free. Two mappings of one source are
    /// one file.
    const FileMapping* OtherOwner(const FileMapping& file) const
    {
        const FileMapping* owner = m_owners.value(Key(file.GetTargetFile()));
        return owner && owner->GetSourceFile() != file.GetSourceFile() ? owner : nullptr;
    }
    bool IsOwned(const QString& target) const { return m_owners.contains(Key(target)); }
    void Add(const FileMapping& file)
    {
        const QString key = Key(file.GetTargetFile());
        if (!m_owners.contains(key))
            m_owners.insert(key, &file);
    }

private:
    static QString Key(const QString& target) { return target.toLower(); }
    static bool HoldsTarget(const FileMapping& file)
    {
        const bool isNewFolder =
            file.HasFlag(FileMapping::Folder) && !file.HasFlag(FileMapping::NoCopy);
        return isNewFolder || ExistsOnDisk(file.GetTargetFile());
    }

    QHash<QString, const FileMapping*> m_owners;
};

bool GiveFreeName(FileMapping& file, const QString& wanted, const Owners& owners)
{
    const QString free = FreePath(
        wanted, [&](const QString& path) { return owners.IsOwned(path) || ExistsOnDisk(path); });
    file.SetFlag(FileMapping::RenameOnCollision, true);
    return file.SetTargetFile(free, true);
}

/// What still stands in the way of a file once its target is nobody else's.
std::optional<ConflictKind> Obstacle(const FileMapping& file, const ImportRequest& request)
{
    if (!ExistsOnDisk(file.GetTargetFile()))
        return {};
    if (IsFolder(file.GetTargetFile()))
        return ConflictKind::FolderInTheWay;
    if (file.HasFlag(FileMapping::RenameOnCollision))
        return ConflictKind::CannotRename;
    if (PolicyFor(file, request) == CollisionPolicy::Stop)
        return ConflictKind::TargetTaken;
    return {};
}

std::optional<ConflictKind> ObstacleInPlace(const FileMapping& file)
{
    const bool isFolder = IsFolder(file.GetTargetFile());
    if (file.HasFlag(FileMapping::Folder))
        return !file.HasFlag(FileMapping::NoCopy) && !isFolder && ExistsOnDisk(file.GetTargetFile())
                   ? std::optional(ConflictKind::FileInTheWay)
                   : std::nullopt;
    return file.HasFlag(FileMapping::Collision) && isFolder
               ? std::optional(ConflictKind::FolderInTheWay)
               : std::nullopt;
}

/// Settles one file; the conflict that remains, if any.
std::optional<Conflict> Settle(FileMapping& file, const QString& wanted, Owners& owners,
                               const ImportRequest& request)
{
    if (HasNoPlace(file))
        return {};
    Conflict conflict{
        {}, file.GetSourceFile(), file.GetTargetFile(), {}, file.HasFlag(FileMapping::Selected), {},
        {}};
    std::optional<ConflictKind> kind;
    if (StaysWhereItIs(file)) {
        kind = ObstacleInPlace(file);
    } else {
        const FileMapping* owner = owners.OtherOwner(file);
        const bool rename = PolicyFor(file, request) == CollisionPolicy::Rename &&
                            !file.HasFlag(FileMapping::KeepTargetName);
        if (owner && !(rename && GiveFreeName(file, wanted, owners))) {
            kind = ConflictKind::SameTarget;
            conflict.other = owner->GetSourceFile();
        } else {
            kind = Obstacle(file, request);
            owners.Add(file);
        }
    }
    if (!kind)
        return {};
    conflict.kind = *kind;
    return conflict;
}

} // namespace

TargetByFile TargetsOf(FileSet& fileSet)
{
    TargetByFile targets;
    for (const auto& file : fileSet.GetFiles())
        targets.insert(file.get(), file->GetTargetFile());
    return targets;
}

void KeepWhereTheyAreLookedFor(FileSet& fileSet, const TargetByFile& places)
{
    for (const auto& file : fileSet.GetFiles()) {
        const QString place = places.value(file.get());
        if (!file->HasFlag(FileMapping::KeepTargetName) || place.isEmpty() ||
            file->GetTargetFile() == place)
            continue;
        file->SetTargetFile(place, true);
        file->SetFlag(FileMapping::Unchanged, false);
        file->SetFlag(FileMapping::Collision, true);
    }
}

FileSet::FileMappingList MarkForAnotherPlace(FileSet& fileSet, const ImportRequest& request)
{
    const FileSet::FileMappingList files = fileSet.GetFiles();
    Owners owners(files);
    FileSet::FileMappingList marked;
    for (const auto& file : files) {
        if (HasNoPlace(*file) || StaysWhereItIs(*file))
            continue;
        const bool isShared = owners.OtherOwner(*file) && !file->HasFlag(FileMapping::Selected);
        const bool isStuck = file->HasFlag(FileMapping::Collision | FileMapping::KeepTargetName) &&
                             PolicyFor(*file, request) == CollisionPolicy::Rename;
        owners.Add(*file);
        if (!isShared && !isStuck)
            continue;
        file->SetFlag(FileMapping::Collision | FileMapping::RenameOnCollision, true);
        marked.append(file);
    }
    return marked;
}

QList<Conflict> SettleTargets(FileSet& fileSet, const ImportRequest& request,
                              const TargetByFile& wanted)
{
    const FileSet::FileMappingList files = fileSet.GetFiles();
    Owners owners(files);
    QList<Conflict> conflicts;
    for (const auto& file : files)
        if (const std::optional<Conflict> conflict =
                Settle(*file, wanted.value(file.get(), file->GetTargetFile()), owners, request))
            conflicts.append(*conflict);
    return conflicts;
}

} // namespace Halvern::Jobs
