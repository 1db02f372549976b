// SPDX-License-Identifier: Apache-2.0

#include "services/Spellings.h"

#include "base/FileStatus.h"
#include "base/SamePath.h"
#include "services/Paths.h"
#include "services/Platform.h"
#include "services/SqliteConnection.h"

#include <QtCore/QDir>

#include <optional>

namespace Halvern::SyncServices {

namespace {

using Base::FileStatus;

FileStatus StatusOf(const QString& path)
{
    return IsUrlLike(path) ? FileStatus() : Base::ReadFileStatus(Platform::NativePath(path));
}

bool IsOne(const FileStatus& a, const FileStatus& b)
{
    return a.device == b.device && a.index == b.index &&
           (a.kind == Base::FileKind::Folder || a.names == 1);
}

std::optional<qint64> FindOtherSpelling(SqliteConnection& connection, const char* find,
                                        const QString& path, int authenticationId)
{
    const QString key = ExactPathKey(path);
    SqliteQuery query(connection, find);
    for (query.Bind(PathKey(path), authenticationId, key); query.Step();) {
        if (query.Text(1) == key)
            return std::nullopt;
        if (!StandsBeside(query.Text(2), path))
            return query.Int64(0);
    }
    return std::nullopt;
}

} // namespace

bool AreTwins(const QString& path, const QString& other)
{
    // What does not exist yet is told apart by the folders above it.
    QString a = QDir::cleanPath(path);
    QString b = QDir::cleanPath(other);
    for (; a != b; a = ParentPath(a), b = ParentPath(b)) {
        const FileStatus status = StatusOf(a);
        const FileStatus otherStatus = status.Exists() ? StatusOf(b) : FileStatus();
        if (otherStatus.Exists() && !IsOne(status, otherStatus))
            return true;
    }
    return false;
}

bool StandsBeside(const QString& recorded, const QString& path)
{
    const FileStatus status = StatusOf(recorded);
    return (status.Exists() && !IsOne(status, StatusOf(path))) || AreTwins(recorded, path);
}

void AdoptOtherSpelling(SqliteConnection& connection, const SpellingQueries& queries,
                        const QString& path, int authenticationId)
{
    if (Base::IgnoresLetterCase())
        return;
    if (const auto row = FindOtherSpelling(connection, queries.find, path, authenticationId))
        SqliteQuery(connection, queries.rename).Bind(ExactPathKey(path), *row).Run();
}

} // namespace Halvern::SyncServices
