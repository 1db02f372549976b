// SPDX-License-Identifier: Apache-2.0

#include "base/RootedFolder.h"

#include <utility>

namespace Halvern::Base {

RootedFolder::~RootedFolder()
{
    if (IsOpen())
        Close(m_root);
}

RootedFolder::RootedFolder(RootedFolder&& other) noexcept
    : m_root(std::exchange(other.m_root, NoHandle)), m_path(std::move(other.m_path))
{}

RootedFolder& RootedFolder::operator=(RootedFolder&& other) noexcept
{
    std::swap(m_root, other.m_root);
    std::swap(m_path, other.m_path);
    return *this;
}

bool RootedFolder::IsAtItsPath() const
{
    const FileStatus here = ReadFileStatus(m_root);
    const FileStatus there = ReadFileStatus(m_path);
    return here.Exists() && there.Exists() && here.device == there.device &&
           here.index == there.index;
}

} // namespace Halvern::Base
