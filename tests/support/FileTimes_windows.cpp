// SPDX-License-Identifier: Apache-2.0

// The standard library of this compiler knows and sets times to the second only.

#include "FileTimes.h"

#include <QtCore/QDir>

#include <gtest/gtest.h>

#include <windows.h>

namespace Halvern::Test {

namespace {

/// Windows counts in steps of 100 ns from the year 1601.
constexpr qint64 From1601To1970 = 116'444'736'000'000'000;

class OpenEntry
{
public:
    OpenEntry(const QString& path, DWORD access)
        : m_handle(::CreateFileW(QDir::toNativeSeparators(path).toStdWString().c_str(), access,
                                 FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                 OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr))
    {}
    ~OpenEntry() { ::CloseHandle(m_handle); }
    OpenEntry(const OpenEntry&) = delete;
    OpenEntry& operator=(const OpenEntry&) = delete;

    HANDLE Get() const { return m_handle; }

private:
    HANDLE m_handle;
};

} // namespace

qint64 ModifiedNanoseconds(const QString& path)
{
    const OpenEntry entry(path, FILE_READ_ATTRIBUTES);
    FILETIME time = {};
    EXPECT_TRUE(::GetFileTime(entry.Get(), nullptr, nullptr, &time)) << path.toStdString();
    const quint64 steps = (quint64(time.dwHighDateTime) << 32) | time.dwLowDateTime;
    return (qint64(steps) - From1601To1970) * 100;
}

void SetModifiedNanoseconds(const QString& path, qint64 nanoseconds)
{
    const OpenEntry entry(path, FILE_WRITE_ATTRIBUTES);
    const auto steps = quint64(nanoseconds / 100 + From1601To1970);
    FILETIME time = {};
    time.dwLowDateTime = DWORD(steps);
    time.dwHighDateTime = DWORD(steps >> 32);
    EXPECT_TRUE(::SetFileTime(entry.Get(), nullptr, nullptr, &time)) << path.toStdString();
}

} // namespace Halvern::Test
