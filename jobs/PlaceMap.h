// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "corsync/Plan.h"

#include "base/SystemPlaces.h"

#include <QtCore/QFlags>
#include <QtCore/QHash>
#include <QtCore/QString>
#include <QtCore/QStringList>

#include <optional>

namespace Halvern::Jobs {

/// What the user said of a folder, and with it of everything below.
enum class PlaceMark
{
    /// Part of the selection.
    Selected = 1,
    /// The cloud cache folder.
    Cloud = 2,
    /// Files may be brought along from here, whatever the place.
    Allowed = 4,
    /// The same, and from few other places.
    Within = 8,
    /// Part of the project.
    Project = 16
};
Q_DECLARE_FLAGS(PlaceMarks, PlaceMark)
Q_DECLARE_OPERATORS_FOR_FLAGS(PlaceMarks)

/// What is known of a file or folder.
struct PlaceFacts
{
    PlaceMarks marks;
    /// Why nothing is brought along from here, as far as nobody marked it.
    Remark refusal = Remark::None;
    /// The refusal begins here: the folder above has none, or another one.
    bool refusalBegins = false;
    /// This very folder is a home; or each folder in it is one.
    bool isHome = false;
    bool holdsHomes = false;
};

/// The system's places, and marks, in one tree of folders: what is nearest to a file counts. Paths
/// are absolute and cleaned, and are taken as they are written. Names that differ in letter case
/// alone are one where the disk says so.
class PlaceMap
{
public:
    void Add(const QString& folder, Base::PlaceKind kind);
    void Mark(const QString& path, PlaceMark mark);

    PlaceFacts OfFile(const QString& path);
    /// Computed once.
    PlaceFacts OfFolder(const QString& folder);
    /// Whether the user's own home lies in the folder, or is it.
    bool HoldsOwnHome(const QString& folder) const;

private:
    struct Entry
    {
        QString path;
        std::optional<Base::PlaceKind> kind;
        PlaceMarks marks;
    };

    Entry& EntryOf(const QString& path);
    PlaceFacts Below(const PlaceFacts& above, const QString& path) const;

    /// By folded path.
    QMultiHash<QString, Entry> m_entries;
    QStringList m_ownHomes;
    QHash<QString, PlaceFacts> m_folders;
};

} // namespace Halvern::Jobs
