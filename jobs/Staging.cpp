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
#include <QtCore/QRegularExpression>

#include <algorithm>
#include <memory>
#include <utility>
#include <vector>

namespace Halvern::Jobs {

namespace {

constexpr char Prefix[] = ".corsync-";
constexpr char LockName[] = ".lock";
/// Holds the way to the file that is being made ready outside of the folder.
constexpr char BesideName[] = ".beside";
/// Holds those that are ready, by numbers.
constexpr char ReadyName[] = ".ready";
constexpr std::size_t LongestName = 255;
/// What 64 bits take in base 36.
constexpr int NameLength = 13;

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

std::unique_ptr<QLockFile> LockOf(const std::filesystem::path& folder)
{
    auto lock =
        std::make_unique<QLockFile>(QStringView(Base::PathText(folder / LockName)).toString());
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
    // These names are taken, in any letter case for the sake of disks that ignore it.
    const auto isName = [&](const char* own) {
        return name.compare(QLatin1String(own), Qt::CaseInsensitive) == 0;
    };
    const bool isTaken = isName(LockName) || isName(BesideName) || isName(ReadyName);
    const std::filesystem::path place = m_folder / Native(isTaken ? u'_' + name : name);
    static_cast<void>(m_cloud.Remove(place));
    return place;
}

std::filesystem::path Staging::PlaceBeside(const std::filesystem::path& target) const
{
    const QString name = QStringView(Base::PathText(target.filename())).toString();
    const std::filesystem::path place =
        target.parent_path() / Native(QString::fromStdString(Name()) + u'-' + name);
    if (Base::PathToUtf8(place.filename()).size() > LongestName || !NoteBeside(place))
        return PlaceFor(name);
    return place;
}

std::filesystem::path Staging::PlaceOnOtherDisk(const std::filesystem::path& target) const
{
    const std::filesystem::path place = target.parent_path() / (Name() + "-part");
    return NoteBeside(place) ? place : std::filesystem::path();
}

/// What is not noted would be left behind by a kill.
bool Staging::NoteBeside(const std::filesystem::path& place) const
{
    QFile note(QStringView(Base::PathText(Absolute(m_folder / BesideName))).toString());
    const QByteArray way = QStringView(Base::PathText(place)).toUtf8();
    if (!RemoveBeside(m_folder) || !note.open(QFile::WriteOnly) || note.write(way) != way.size() ||
        !note.flush())
        return false;
    static_cast<void>(m_cloud.Remove(place));
    return true;
}

std::filesystem::path Staging::SetAside(const std::filesystem::path& place)
{
    const std::filesystem::path aside = PlaceToWait();
    const bool isMoved = !aside.empty() && m_cloud.Move(place, aside, Base::Existing::Keep);
    return isMoved ? aside : std::filesystem::path();
}

std::filesystem::path Staging::PlaceToWait()
{
    const std::filesystem::path folder = m_folder / ReadyName;
    m_hasReady = m_hasReady || m_cloud.MakePrivateFolder(folder);
    return m_hasReady ? folder / std::to_string(++m_ready) : std::filesystem::path();
}

/// Nothing but a file with this folder's name is taken for one of its own.
bool Staging::RemoveBeside(const std::filesystem::path& folder) const
{
    QFile note(QStringView(Base::PathText(Absolute(folder / BesideName))).toString());
    if (!note.exists())
        return true;
    if (!note.open(QFile::ReadOnly))
        return false;
    const std::filesystem::path place = Native(QString::fromUtf8(note.readAll()));
    Base::FileStatus status;
    const bool isOwn =
        Base::PathToUtf8(place.filename()).starts_with(Base::PathToUtf8(folder) + '-');
    if (!isOwn || !m_cloud.Status(place, status) || !status.Exists())
        return true;
    return static_cast<bool>(m_cloud.Remove(place));
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
    const auto textOf = [](const std::filesystem::path& path) {
        return QStringView(Base::PathText(path)).toString();
    };
    for (const std::filesystem::path& folder : {m_cloud.Path() / m_folder, m_folder}) {
        const QString ready =
            QRegularExpression::escape(textOf(folder / ReadyName / "x").chopped(1));
        text.replace(QRegularExpression(ready + QStringLiteral("[0-9]+")), shown);
    }
    text.replace(QString::fromStdString(Name()) + u'-' + name, name);
    for (const std::filesystem::path& folder : {m_cloud.Path() / m_folder, m_folder})
        text.replace(QStringView(Base::PathText(folder / Native(name))).toString(), shown);
    for (const std::filesystem::path& folder : {m_cloud.Path() / m_folder, m_folder})
        text.replace(QStringView(Base::PathText(folder)).toString(),
                     QDir::toNativeSeparators(QFileInfo(target).path()));
    return text;
}

/// False when something is left.
bool Staging::Clear(const std::filesystem::path& folder) const
{
    std::vector<std::filesystem::path> names;
    if (!m_cloud.List(folder, names))
        return false;
    bool isClear = ClearReady(folder) && RemoveBeside(folder);
    for (const std::filesystem::path& name : names)
        if (name != LockName && name != ReadyName && (isClear || name != BesideName))
            isClear = static_cast<bool>(m_cloud.Remove(folder / name)) && isClear;
    return isClear;
}

bool Staging::ClearReady(const std::filesystem::path& folder) const
{
    const std::filesystem::path ready = folder / ReadyName;
    std::vector<std::filesystem::path> names;
    Base::FileStatus status;
    if (!m_cloud.Status(ready, status) || status.kind != Base::FileKind::Folder)
        return true;
    if (!m_cloud.List(ready, names))
        return false;
    for (const std::filesystem::path& name : names)
        static_cast<void>(m_cloud.Remove(ready / name));
    return static_cast<bool>(m_cloud.RemoveFolder(ready));
}

void Staging::RemoveLeftovers() const
{
    std::vector<std::filesystem::path> names;
    if (!m_cloud.List({}, names))
        return;
    for (const std::filesystem::path& name : names) {
        Base::FileStatus status;
        if (!IsStagingName(QStringView(Base::PathText(name)).toString()) ||
            !m_cloud.Status(name, status) || status.kind != Base::FileKind::Folder)
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
