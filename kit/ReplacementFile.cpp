// SPDX-License-Identifier: Apache-2.0

#include "pluginkit/ReplacementFile.h"

#include "pluginkit/FormatError.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <memory>
#include <random>
#include <thread>
#include <utility>

namespace Halvern::PluginKit {

namespace {

using namespace std::chrono_literals;

/// How long a program that reads the file has to finish.
constexpr auto Patience = 2s;

/// Short, whatever the file's own name: that one may already be as long as the system allows.
std::string TemporaryName()
{
    std::random_device random;
    std::array<char, 32> name{};
    std::snprintf(name.data(), name.size(), ".relink-%08x%08x.tmp", random(), random());
    return name.data();
}

} // namespace

ReplacementFile::ReplacementFile(InputFile& source)
    : m_source(source), m_file(Platform::Resolved(source.Path()))
{
    CreateTemporary();
}

ReplacementFile::~ReplacementFile()
{
    if (m_handle != Platform::NoHandle)
        Platform::Close(m_handle);
    if (!m_temporary.empty())
        Platform::Remove(m_temporary); // Commit may have made it as read-only as the original
}

void ReplacementFile::CreateTemporary()
{
    constexpr int attempts = 100;
    for (int i = 0; i < attempts && m_handle == Platform::NoHandle; ++i) {
        std::filesystem::path candidate = m_file.parent_path() / TemporaryName();
        m_handle = Platform::CreateExclusively(candidate);
        if (m_handle != Platform::NoHandle)
            m_temporary = std::move(candidate);
    }
    if (m_handle == Platform::NoHandle)
        throw FormatError("a temporary file cannot be made: every name tried is taken");
}

void ReplacementFile::Write(std::string_view bytes)
{
    Platform::WriteAll(m_handle, bytes);
}

void ReplacementFile::CopyFromSource(std::uint64_t offset, std::uint64_t size)
{
    const auto buffer = std::make_unique<char[]>(CopyBufferSize);
    while (size > 0) {
        const auto part = static_cast<std::size_t>(std::min<std::uint64_t>(size, CopyBufferSize));
        m_source.ReadAt(offset, buffer.get(), part);
        Write({buffer.get(), part});
        offset += part;
        size -= part;
    }
}

void ReplacementFile::RequireUnchanged() const
{
    if (InputFile(m_file).Stamp() != m_source.Stamp())
        throw FormatError("the file was changed by someone else meanwhile");
}

void ReplacementFile::Commit()
{
    Platform::CopyPermissions(m_file, m_temporary, m_handle);
    Platform::FlushToDisk(m_handle);
    Platform::Close(m_handle);
    m_handle = Platform::NoHandle;
    m_source.Close();
    TakePlace();
    m_temporary.clear();
}

void ReplacementFile::TakePlace() const
{
    const auto end = std::chrono::steady_clock::now() + Patience;
    for (;;) {
        try {
            RequireUnchanged();
            return Platform::RenameOver(m_temporary, m_file);
        } catch (const HeldError&) {
            if (std::chrono::steady_clock::now() >= end)
                throw;
        }
        std::this_thread::sleep_for(20ms);
    }
}

} // namespace Halvern::PluginKit
