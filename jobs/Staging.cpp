// SPDX-License-Identifier: Apache-2.0

#include "Staging.h"

#include "Paths.h"

#include "base/FileLock.h"
#include "base/FileStatus.h"
#include "base/NativePath.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QDir>
#include <QtCore/QFile>
#include <QtCore/QFileInfo>
#include <QtCore/QRandomGenerator>

#include <algorithm>
#include <memory>
#include <utility>
#include <vector>

namespace Halvern::Jobs {

namespace {

constexpr char Prefix[] = ".corsync-";
constexpr char LockName[] = ".lock";
/// Holds the folders outside of this one in which files are made ready, each with a NUL after it.
constexpr char BesideName[] = ".beside";
/// Begins each of them: the cloud folder itself is one, too.
constexpr QByteArrayView AtRoot = "./";
constexpr std::size_t LongestName = 255;
/// What 64 bits take in base 36.
constexpr int NameLength = 13;

QString PathString(const std::filesystem::path& path)
{
    return QStringView(Base::PathText(path)).toString();
}

std::unique_ptr<QLockFile> LockOf(const std::filesystem::path& folder)
{
    auto lock = std::make_unique<QLockFile>(PathString(folder / LockName));
    // Only the end of its process makes a lock stale, not its age.
    lock->setStaleLockTime(0);
    return lock;
}

bool IsLock(const QLockFile& lock)
{
    qint64 process = 0;
    QString machine;
    QString program;
    return lock.getLockInfo(&process, &machine, &program);
}

/// Its process ended between making the file and writing who it is.
bool IsUnwrittenLock(const std::filesystem::path& lock)
{
    const Base::FileStatus status = Base::ReadLinkStatus(lock);
    return status.kind == Base::FileKind::File && status.size == 0 && !Base::IsFileLocked(lock);
}

/// The lock stays for as long as the process lives, and its file longer: without it the folder
/// would be taken for somebody's own, and never be cleared.
void KeepForEver(std::unique_ptr<QLockFile> lock)
{
    static auto* const kept = new std::vector<std::unique_ptr<QLockFile>>;
    kept->push_back(std::move(lock));
}

} // namespace

bool IsStagingName(const QString& name)
{
    const QLatin1String prefix(Prefix);
    const QStringView rest = QStringView(name).mid(prefix.size());
    return name.startsWith(prefix) && rest.size() == NameLength &&
           std::all_of(rest.begin(), rest.end(), [](QChar character) {
               return (character >= u'0' && character <= u'9') ||
                      (character >= u'a' && character <= u'z');
           });
}

QString LockOfStaging()
{
    return QLatin1String(LockName);
}

Base::FileResult Staging::Begin()
{
    RemoveLeftovers();
    Base::FileResult made;
    for (int tries = 0; tries < 8; ++tries) {
        const QString random = QString::number(QRandomGenerator::system()->generate64(), 36);
        m_folder = Native(QLatin1String(Prefix) + random.rightJustified(NameLength, u'0'));
        made = m_cloud.MakePrivateFolder(m_folder);
        if (!made)
            continue;
        m_lock = LockOf(Absolute(m_folder));
        Base::FileStatus lock;
        if (m_lock->tryLock(0) && m_cloud.Status(m_folder / LockName, lock) && lock.Exists())
            return made;
        // Taken for a leftover by another job, which removes it.
        m_lock.reset();
    }
    m_folder.clear();
    // The name of a folder that there is not tells nobody anything.
    return Base::FileResult::Failed("Nothing can be written to " + Base::PathToUtf8(m_cloud.Path()),
                                    made.Code());
}

Staging::~Staging()
{
    if (m_folder.empty())
        return;
    if (!Clear(m_folder)) {
        KeepForEver(std::move(m_lock));
        return;
    }
    m_lock.reset();
    static_cast<void>(m_cloud.RemoveFolder(m_folder));
}

std::filesystem::path Staging::PlaceFor(const QString& name) const
{
    // The lock's own name is taken, in any letter case for the sake of disks that ignore it.
    const bool isTaken = name.compare(QLatin1String(LockName), Qt::CaseInsensitive) == 0 ||
                         name.compare(QLatin1String(BesideName), Qt::CaseInsensitive) == 0;
    const std::filesystem::path place = m_folder / Native(isTaken ? u'_' + name : name);
    static_cast<void>(m_cloud.Remove(place));
    return place;
}

std::filesystem::path Staging::PlaceBeside(const std::filesystem::path& target) const
{
    const auto named = [&](const QString& name) {
        return Native(QString::fromStdString(Name()) + u'-' + name);
    };
    std::filesystem::path own = named(PathString(target.filename()));
    // Plug-ins go by the extension.
    if (Base::PathToUtf8(own).size() > LongestName)
        own = named(QStringLiteral("copy") + PathString(target.extension()));
    // What is not noted would be left behind by a kill.
    if (Base::PathToUtf8(own).size() > LongestName || !NoteFolder(target.parent_path()))
        return {};
    const std::filesystem::path place = target.parent_path() / own;
    static_cast<void>(m_cloud.Remove(place));
    return place;
}

bool Staging::NoteFolder(const std::filesystem::path& folder) const
{
    QFile note(PathString(Absolute(m_folder / BesideName)));
    const QByteArray entry = AtRoot.toByteArray() + PathString(folder).toUtf8() + '\0';
    if (!note.open(QFile::ReadWrite))
        return false;
    const QByteArray noted = note.readAll();
    if (noted.startsWith(entry) || noted.contains('\0' + entry))
        return true;
    return note.write(entry) == entry.size() && note.flush();
}

/// Nothing but what has this folder's name, which was drawn by lot, before its own is taken for
/// something that it has left.
bool Staging::RemoveBeside(const std::filesystem::path& folder) const
{
    QFile note(PathString(Absolute(folder / BesideName)));
    if (!note.exists())
        return true;
    if (!note.open(QFile::ReadOnly))
        return false;
    const std::string own = Base::PathToUtf8(folder) + '-';
    bool isClear = true;
    for (const QByteArray& noted : note.readAll().split('\0')) {
        const std::filesystem::path place = Native(QString::fromUtf8(noted.mid(AtRoot.size())));
        std::vector<std::filesystem::path> names;
        Base::FileStatus status;
        if (!noted.startsWith(AtRoot) || !m_cloud.Status(place, status) || !status.Exists())
            continue;
        isClear = m_cloud.List(place, names) && isClear;
        for (const std::filesystem::path& name : names)
            if (Base::PathToUtf8(name).starts_with(own))
                isClear = static_cast<bool>(m_cloud.Remove(place / name)) && isClear;
    }
    return isClear;
}

std::filesystem::path Staging::Absolute(const std::filesystem::path& place) const
{
    return m_cloud.Path() / place;
}

QString Staging::TextOf(const Base::FileResult& failure, const QString& target) const
{
    QString text = QString::fromStdString(failure.Text());
    const QString shown = QDir::toNativeSeparators(target);
    const QString name = QFileInfo(target).fileName();
    text.replace(QString::fromStdString(Name()) + u'-' + name, name);
    for (const std::filesystem::path& folder : {m_cloud.Path() / m_folder, m_folder})
        text.replace(PathString(folder / Native(name)), shown);
    for (const std::filesystem::path& folder : {m_cloud.Path() / m_folder, m_folder})
        text.replace(PathString(folder), QDir::toNativeSeparators(QFileInfo(target).path()));
    return text;
}

/// False when something is left.
bool Staging::Clear(const std::filesystem::path& folder) const
{
    std::vector<std::filesystem::path> names;
    if (!m_cloud.List(folder, names))
        return false;
    bool isClear = RemoveBeside(folder);
    for (const std::filesystem::path& name : names)
        if (name != LockName && (isClear || name != BesideName))
            isClear = static_cast<bool>(m_cloud.Remove(folder / name)) && isClear;
    return isClear;
}

void Staging::RemoveLeftovers() const
{
    std::vector<std::filesystem::path> names;
    if (!m_cloud.List({}, names))
        return;
    for (const std::filesystem::path& name : names) {
        Base::FileStatus status;
        if (!IsStagingName(PathString(name)) || !m_cloud.Status(name, status) ||
            status.kind != Base::FileKind::Folder)
            continue;
        std::unique_ptr<QLockFile> lock = LockOf(Absolute(name));
        // Somebody's own folder of such a name has none.
        if (IsLock(*lock)) {
            if (!lock->tryLock(0))
                continue;
            if (!Clear(name)) {
                KeepForEver(std::move(lock));
                continue;
            }
        } else if (IsUnwrittenLock(Absolute(name) / LockName)) {
            if (Clear(name))
                static_cast<void>(m_cloud.Remove(name / LockName));
        }
        lock.reset();
        // Nothing happens to one that holds something.
        static_cast<void>(m_cloud.RemoveFolder(name));
    }
}

} // namespace Halvern::Jobs
