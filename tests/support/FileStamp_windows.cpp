// SPDX-License-Identifier: Apache-2.0

#include "FileStamp.h"

#include <QtCore/QDir>
#include <QtCore/QFile>

#include <windows.h>

namespace Halvern::Test {

namespace {

/// The file's own number on its disk, and its attributes.
void AskSystem(const QString& path, FileStamp& stamp)
{
    const std::wstring name = QDir::toNativeSeparators(path).toStdWString();
    const HANDLE handle = ::CreateFileW(
        name.c_str(), FILE_READ_ATTRIBUTES, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
        nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
    if (handle == INVALID_HANDLE_VALUE)
        return;
    BY_HANDLE_FILE_INFORMATION information = {};
    if (::GetFileInformationByHandle(handle, &information)) {
        stamp.index =
            (quint64(information.nFileIndexHigh) << 32) + quint64(information.nFileIndexLow);
        stamp.mode = information.dwFileAttributes;
        const bool isFolder = information.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY;
        stamp.kind = isFolder ? "folder" : "file";
    }
    ::CloseHandle(handle);
}

} // namespace

FileStamp StampOf(const QString& path)
{
    FileStamp stamp;
    AskSystem(path, stamp);
    if (stamp.kind == "none")
        return stamp;
    stamp.nanoseconds = ModifiedNanoseconds(path);
    QFile file(path);
    if (stamp.kind == "file")
        stamp.content = file.open(QFile::ReadOnly) ? file.readAll() : QByteArray("not to be read");
    return stamp;
}

} // namespace Halvern::Test
