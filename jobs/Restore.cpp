// SPDX-License-Identifier: Apache-2.0

#include "Paths.h"
#include "RealPaths.h"
#include "Staging.h"
#include "VersionStore.h"

#include "base/FileAttributes.h"
#include "base/FileCopy.h"
#include "base/FileLock.h"
#include "base/FileRenaming.h"
#include "base/NativePath.h"
#include "base/RootedFolder.h"

#include <QtCore/QDir>
#include <QtCore/QFileInfo>
#include <QtCore/QRandomGenerator>

namespace Halvern::Jobs {

using Base::FileKind;
using Base::FileProblem;
using Base::FileResult;
using Base::FileStatus;
using SyncServices::BaseStoreRun;
using SyncServices::SyncManager;

namespace {

QString Shown(const QString& path)
{
    return QDir::toNativeSeparators(path);
}

[[noreturn]] void Refuse(const QString& path, const QString& why)
{
    throw JobError(JobErrorKind::RestoreRefused, Shown(path) + u' ' + why);
}

[[noreturn]] void Fail(const QString& path, const QString& why)
{
    throw JobError(JobErrorKind::RestoreFailed,
                   QStringLiteral("%1 is not restored: %2").arg(Shown(path), why));
}

void Require(const FileResult& result, const QString& path)
{
    if (!result)
        Fail(path, QString::fromStdString(result.Text()));
}

bool IsAsItWas(const FileStatus& was, const FileStatus& is)
{
    return was.kind == is.kind && was.size == is.size && was.modified == is.modified &&
           was.device == is.device && was.index == is.index;
}

void WriteVersion(const Version& version, const QString& target, const QString& file)
{
    QString error;
    if (!SyncManager::GetInstance()->WriteVersion({version.saved, version.bytes, version.storeFile},
                                                  target, &error))
        Fail(file, error);
}

Version Find(const QString& file, int number)
{
    const QList<Version> versions = ReadVersions(file);
    if (number >= 1 && number <= versions.size())
        return versions.at(number - 1);
    throw JobError(JobErrorKind::VersionMissing,
                   versions.isEmpty() ? QStringLiteral("%1 has no old versions").arg(Shown(file))
                                      : QStringLiteral("%1 has no version %2, only 1 to %3")
                                            .arg(Shown(file))
                                            .arg(number)
                                            .arg(versions.size()));
}

/// A file that is gone at the end of the scope unless it was given its name.
class Unfinished
{
public:
    explicit Unfinished(const QString& folder)
        : m_path(folder + QStringLiteral("/.corsync-") +
                 QString::number(QRandomGenerator::system()->generate64(), 36))
    {}
    ~Unfinished()
    {
        if (!m_isFinished)
            Base::RemoveFile(Native(m_path));
    }
    Unfinished(const Unfinished&) = delete;
    Unfinished& operator=(const Unfinished&) = delete;

    const QString& Path() const { return m_path; }
    FileResult Finish(const QString& path)
    {
        FileResult named = Base::RenameToFree(Native(m_path), Native(path));
        m_isFinished = bool(named);
        return named;
    }

private:
    const QString m_path;
    bool m_isFinished = false;
};

void WriteElsewhere(const Version& version, const QString& output)
{
    if (ExistsOnDisk(output))
        Refuse(output, QStringLiteral("exists already"));
    const QString folder = QFileInfo(output).path();
    if (!IsFolder(folder))
        Refuse(output, QStringLiteral("has no folder to lie in"));
    Unfinished part(folder);
    WriteVersion(version, part.Path(), output);
    Require(Base::FlushFile(Native(part.Path())), output);
    const FileResult named = part.Finish(output);
    if (named.Problem() == FileProblem::NameTaken)
        Refuse(output, QStringLiteral("exists already"));
    Require(named, output);
}

/// Puts a version back into the cloud folder.
class Restoration
{
public:
    Restoration(const Session& session, const QString& file)
        : m_file(file), m_below(Native(PathBelowCloudFolder(session, file)))
    {
        if (m_below.empty())
            Refuse(file, QStringLiteral("does not lie in the cloud cache folder ") +
                             Shown(session.CloudFolder()));
        Require(m_cloud.Open(Native(session.CloudFolder())), file);
    }

    /// True when a file stood there.
    bool Run(const Version& version)
    {
        const BaseStoreRun run; // the version stays in the store until it is in its place
        const FileStatus before = Look();
        Staging staging(m_cloud);
        Require(staging.Begin(), m_file);
        const std::filesystem::path place = staging.PlaceFor(QFileInfo(m_file).fileName());
        const std::filesystem::path path = staging.Absolute(place);
        WriteVersion(version, QStringView(Base::PathText(path)).toString(), m_file);
        if (before.Exists())
            KeepOld(path);
        Require(m_cloud.Flush(place), m_file);
        Require(m_cloud.MakeFolders(m_below.parent_path()), m_file);
        Place(place, before);
        return before.Exists();
    }

private:
    FileStatus Look() const
    {
        FileStatus status;
        const FileResult looked = m_cloud.Status(m_below, status);
        if (looked.Problem() == FileProblem::LeadsOutside)
            Refuse(m_file, QStringLiteral("lies beyond a symbolic link"));
        if (looked.Problem() == FileProblem::NotAFolder)
            Refuse(m_file, QStringLiteral("lies below a file"));
        Require(looked, m_file);
        if (status.kind == FileKind::Link)
            Refuse(m_file, QStringLiteral("is a symbolic link"));
        if (status.Exists() && status.kind != FileKind::File)
            Refuse(m_file, QStringLiteral("is no file"));
        if (status.Exists() && !Base::IsWritable(Native(m_file)))
            Refuse(m_file, QStringLiteral("is read-only"));
        return status;
    }

    void KeepOld(const std::filesystem::path& staged) const
    {
        if (Base::IsFileLocked(Native(m_file)))
            Fail(m_file, QStringLiteral("another program has it open"));
        QString error;
        if (!SyncManager::GetInstance()->SaveVersion(m_file, &error))
            Fail(m_file, QStringLiteral("what stands there could not be kept: ") + error);
        Base::Handle handle = Base::NoHandle;
        FileResult opened = Base::OpenForReading(staged, handle, Base::Links::Refuse);
        Require(opened, m_file);
        const FileResult copied = Base::CopyPermissions(Native(m_file), staged, handle);
        Base::Close(handle);
        Require(copied, m_file);
    }

    void Place(const std::filesystem::path& place, const FileStatus& before) const
    {
        if (!IsAsItWas(before, Look()))
            Fail(m_file, QStringLiteral("it changed at this moment"));
        const FileResult moved = m_cloud.Move(
            place, m_below, before.Exists() ? Base::Existing::Replace : Base::Existing::Keep);
        if (moved.Problem() == FileProblem::NameTaken)
            Fail(m_file, QStringLiteral("it changed at this moment"));
        Require(moved, m_file);
        // It is in its place; that it may be lost in a power cut of this moment is no failure.
        static_cast<void>(m_cloud.Flush(m_below));
    }

    const QString m_file;
    const std::filesystem::path m_below;
    Base::RootedFolder m_cloud;
};

} // namespace

RestoredVersion RestoreVersion(const Session& session, const QString& file, int number,
                               const QString& output)
{
    if (output.isEmpty() && session.Use() == SessionUse::PlanOnly)
        throw JobError(JobErrorKind::WrongOrder,
                       QStringLiteral("a session that is for plans only restores nothing"));
    RestoredVersion restored;
    restored.file = VersionedFile(session, file);
    restored.version = Find(restored.file, number);
    if (output.isEmpty()) {
        restored.replaced = Restoration(session, restored.file).Run(restored.version);
        return restored;
    }
    restored.file = AbsolutePath(output);
    WriteElsewhere(restored.version, restored.file);
    return restored;
}

} // namespace Halvern::Jobs
