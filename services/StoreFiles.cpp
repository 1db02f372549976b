// SPDX-License-Identifier: Apache-2.0

#include "services/StoreFiles.h"

#include "base/Directory.h"
#include "base/FileCopy.h"
#include "base/FileRenaming.h"
#include "services/Paths.h"
#include "services/Platform.h"

#include <QtCore/QCoreApplication>
#include <QtCore/QCryptographicHash>
#include <QtCore/QDateTime>
#include <QtCore/QElapsedTimer>

#include <atomic>
#include <chrono>
#include <string>
#include <string_view>
#include <thread>

namespace Halvern::SyncServices {

namespace {

using Base::FileResult;

constexpr std::size_t bufferSize = 1 << 18;

/// Milliseconds; the store is locked for the time of a few calls to the system.
constexpr int patience = 10000;

/// Several times as fast as SHA-256 in Qt, and as strong.
constexpr auto algorithm = QCryptographicHash::Blake2b_256;

/// Hashes `source`; the bytes also go to `target` unless it is null.
FileResult HashAll(const OpenFile& source, const OpenFile* target, QByteArray& result)
{
    QCryptographicHash hash(algorithm);
    std::string buffer(bufferSize, '\0');
    std::size_t got = 0;
    for (quint64 offset = 0;; offset += got) {
        FileResult done = Base::ReadSome(source.handle, offset, buffer.data(), buffer.size(), got);
        if (done && got == 0) {
            result = hash.result();
            return done;
        }
        if (done && target != nullptr)
            done = Base::WriteAll(target->handle, std::string_view(buffer).substr(0, got));
        if (!done)
            return done;
        hash.addData(QByteArrayView(buffer.data(), static_cast<qsizetype>(got)));
    }
}

} // namespace

FileResult OpenFile::Open(const QString& path)
{
    return Base::OpenForReading(Platform::NativePath(path), handle, Base::Links::Refuse);
}

void OpenFile::Close()
{
    if (handle != Base::NoHandle)
        Base::Close(handle);
    handle = Base::NoHandle;
}

PartFile::PartFile(const QString& folder)
{
    static std::atomic<quint64> counter{0};
    m_path = JoinPath(folder, QStringLiteral("%1-%2-%3.part")
                                  .arg(QDateTime::currentMSecsSinceEpoch())
                                  .arg(QCoreApplication::applicationPid())
                                  .arg(counter++));
}

PartFile::~PartFile()
{
    if (!m_made)
        return;
    file.Close();
    Base::RemoveFile(Platform::NativePath(m_path));
}

FileResult PartFile::Make()
{
    FileResult made = Base::CreateExclusively(Platform::NativePath(m_path), file.handle);
    if (made && file.handle == Base::NoHandle)
        made = FileResult::Failed("a file of the same name is there");
    m_made = bool(made);
    return made;
}

FileResult PartFile::MoveTo(const QString& path, bool lasting)
{
    file.Close();
    const auto from = Platform::NativePath(m_path);
    const auto to = Platform::NativePath(path);
    FileResult moved = lasting ? Base::RenameOver(from, to) : Base::Rename(from, to);
    if (moved)
        m_made = false;
    return moved;
}

FileResult HashContent(const OpenFile& content, QByteArray& hash)
{
    return HashAll(content, nullptr, hash);
}

FileResult CopyContent(const OpenFile& source, const OpenFile& target, QByteArray& hash)
{
    return Base::CloneBytes(source.handle, target.handle) ? HashAll(target, nullptr, hash)
                                                          : HashAll(source, &target, hash);
}

FileResult MakeOwnFolder(const QString& folder)
{
    const auto native = Platform::NativePath(folder);
    switch (Base::ReadLinkStatus(native).kind) {
    case Base::FileKind::Folder:
        return {};
    case Base::FileKind::Missing:
        break;
    case Base::FileKind::Link:
        return FileResult::Failed(folder.toStdString() + " is a symbolic link");
    case Base::FileKind::File:
    case Base::FileKind::Other:
        return FileResult::Failed(folder.toStdString() + " is no folder");
    }
    const FileResult made = Base::MakeFolders(native);
    return made ? made : FileResult::Failed(folder.toStdString() + " cannot be made", made.Code());
}

FileResult HoldPatiently(Base::HeldFile& held, const QString& file)
{
    QElapsedTimer waited;
    waited.start();
    for (;;) {
        FileResult result = held.Hold(Platform::NativePath(file));
        if (!result.IsHeld() || waited.elapsed() > patience)
            return result ? result : FileResult::Failed(file.toStdString() + ": " + result.Text());
        std::this_thread::sleep_for(std::chrono::milliseconds(5));
    }
}

QByteArray HashText(const QByteArray& text)
{
    return QCryptographicHash::hash(text, algorithm);
}

} // namespace Halvern::SyncServices
