// SPDX-License-Identifier: Apache-2.0

#include "FileTimes.h"

#include <chrono>
#include <filesystem>

namespace Halvern::Test {

namespace {

std::filesystem::path Native(const QString& path)
{
    return std::filesystem::path(path.toStdU16String());
}

using FileClock = std::chrono::file_clock;

} // namespace

qint64 ModifiedNanoseconds(const QString& path)
{
    const auto time = FileClock::to_sys(std::filesystem::last_write_time(Native(path)));
    return std::chrono::duration_cast<std::chrono::nanoseconds>(time.time_since_epoch()).count();
}

void SetModifiedNanoseconds(const QString& path, qint64 nanoseconds)
{
    const std::chrono::sys_time<std::chrono::nanoseconds> time{
        std::chrono::nanoseconds(nanoseconds)};
    std::filesystem::last_write_time(
        Native(path), std::chrono::time_point_cast<FileClock::duration>(FileClock::from_sys(time)));
}

} // namespace Halvern::Test
