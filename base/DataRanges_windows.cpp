// SPDX-License-Identifier: Apache-2.0

#include "base/DataRanges.h"

#include "base/WindowsApi.h"

#include <algorithm>

#include <winioctl.h>

namespace Halvern::Base {

namespace {

HANDLE Native(Handle handle)
{
    return reinterpret_cast<HANDLE>(handle);
}

} // namespace

DataRanges::DataRanges(Handle file) noexcept : m_file(file)
{
    BY_HANDLE_FILE_INFORMATION info = {};
    m_isSparse = ::GetFileInformationByHandle(Native(file), &info) &&
                 (info.dwFileAttributes & FILE_ATTRIBUTE_SPARSE_FILE);
}

DataRange DataRanges::Next(std::uint64_t offset) const noexcept
{
    LARGE_INTEGER size = {};
    if (!m_isSparse || !::GetFileSizeEx(Native(m_file), &size))
        return {offset, ToTheEnd};
    const std::uint64_t end = std::max(offset, static_cast<std::uint64_t>(size.QuadPart));
    FILE_ALLOCATED_RANGE_BUFFER wanted = {};
    wanted.FileOffset.QuadPart = static_cast<LONGLONG>(offset);
    wanted.Length.QuadPart = static_cast<LONGLONG>(end - offset);
    FILE_ALLOCATED_RANGE_BUFFER found = {};
    DWORD got = 0;
    // More than one range is what was asked for, and more.
    if (!::DeviceIoControl(Native(m_file), FSCTL_QUERY_ALLOCATED_RANGES, &wanted, sizeof wanted,
                           &found, sizeof found, &got, nullptr) &&
        ::GetLastError() != ERROR_MORE_DATA)
        return {offset, ToTheEnd};
    if (got < sizeof found)
        return {end, end};
    const auto begin = static_cast<std::uint64_t>(found.FileOffset.QuadPart);
    return {std::max(offset, begin), begin + static_cast<std::uint64_t>(found.Length.QuadPart)};
}

} // namespace Halvern::Base
