// SPDX-License-Identifier: Apache-2.0

#include "services/StoreFiles.h"

#include "base/ContentReader.h"
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
#include <thread>

namespace Halvern::SyncServices {

namespace {

using Base::FileResult;

/// Milliseconds; the store is locked for the time of a few calls to the system.
constexpr int patience = 10000;

/// Several times as fast as SHA-256 in Qt, and as strong.
constexpr auto algorithm = QCryptographicHash::Blake2b_256;

void AddZeros(QCryptographicHash& hash, quint64 count)
{
    static constexpr char zeros[4096] = {};
    for (; count > sizeof zeros; count -= sizeof zeros)
        hash.addData(QByteArrayView(zeros, sizeof zeros));
    hash.addData(QByteArrayView(zeros, static_cast<qsizetype>(count)));
}

/// Hashes `source`; the bytes also go to `target` unless it is null.
FileResult HashAll(const OpenFile& source, const OpenFile* target, QByteArray& result)
{
    QCryptographicHash hash(algorithm);
    Base::ContentReader reader(source.handle);
    bool endsInHole = false;
    for (Base::ContentReader::Piece piece;;) {
        FileResult done = reader.Next(piece);
        const bool isEnd = done && piece.size == 0;
        if (done && target != nullptr)
            done = isEnd && endsInHole
                       ? Base::Lengthen(target->handle, piece.offset)
                       : Base::WriteAllAt(target->handle, piece.offset, piece.bytes);
        if (!done)
            return done;
        if (isEnd)
            break;
        endsInHole = piece.IsHole();
        if (endsInHole)
            AddZeros(hash, piece.size);
        else
            hash.addData(QByteArrayView(piece.bytes.data(), qsizetype(piece.bytes.size())));
    }
    result = hash.result();
    return {};
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
