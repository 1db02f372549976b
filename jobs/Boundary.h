// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "PlaceMap.h"
#include "RealPaths.h"

#include "corsync/Plan.h"

#include <QtCore/QList>
#include <QtCore/QString>
#include <QtCore/QStringList>

namespace Halvern::Jobs {

/// Folders that the user named. What is not absolute in `allowed` does not count.
struct BoundaryFolders
{
    /// ImportRequest::within.
    QStringList within;
    /// ServicesSettings::allowedFolders.
    QStringList allowed;
    QString cloud;
};

struct BoundaryPlace
{
    QString folder;
    Base::PlaceKind kind = Base::PlaceKind::Open;
};

/// Base::PlacesOfSystem. Not to be called while another thread changes the environment.
QList<BoundaryPlace> BoundaryPlacesOfSystem();

/// Whether a job may bring a file along because another file links it. A design may come from
/// anybody, and must not be able to publish what its receiver keeps private.
///
/// Refused are the places of the system (base/SystemPlaces), what is hidden in a home, the homes of
/// others, and files that are keys by their names. A file counts as lying where it is named and
/// where it leads: both must be well.
///
///     sources {"/home/ann/shed/Shed.gltf"}
///     Check("/home/ann/shed/door.bin")    allowed
///     Check("/usr/share/wood/oak.png")    allowed, outside
///     Check("/home/ann/.ssh/id_rsa")      SecretPlace
///     Check("/home/ann/shed/oak.png")     SystemPlace, when it is a symbolic link to /etc/shadow
///
/// Exempt are, by where a file leads: the selection, the cloud cache folder, and the folders that
/// the user named. With folders in `within` no others are allowed but the selection and the cloud
/// cache folder.
///
/// The project is the folder that holds the selection, and the version-controlled folder around it:
/// never a home, a folder that holds one's home, or the beginning of a place that is refused. It is
/// not refused when it lies in such a place.
///
/// Opens no file. The disk is asked once per folder and once per file.
class Boundary
{
public:
    struct Answer
    {
        bool allowed = true;
        /// Why not: SystemPlace, SecretPlace, OtherHome or NotWithin.
        Remark remark = Remark::None;
        /// Allowed, but not part of the project.
        bool outside = false;

        bool operator==(const Answer&) const = default;
    };

    /// `sources` are absolute. The files among them count as named by the user wherever they lie;
    /// one that is a symbolic link to a refused place does not.
    Boundary(const QStringList& sources, const BoundaryFolders& folders,
             const QList<BoundaryPlace>& places = BoundaryPlacesOfSystem());

    /// Of the absolute path of a file that exists.
    Answer Check(const QString& path);
    /// Where Check takes the file to lie.
    QString RealPathOf(const QString& path);

private:
    void Mark(const QString& path, PlaceMark mark);
    void MarkSources(const QStringList& sources);
    void MarkProject(const QStringList& sourceFolders);
    bool CanBeProject(const QString& folder);
    void MarkWhatSourcesLeadTo(const QStringList& sources);
    Remark RefusalOf(const QString& path, const QString& real);

    PlaceMap m_map;
    RealPaths m_real;
    bool m_isStrict;
};

} // namespace Halvern::Jobs
