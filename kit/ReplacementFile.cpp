// SPDX-License-Identifier: Apache-2.0

#include "pluginkit/ReplacementFile.h"

#include "kit/InputFileState.h"
#include "pluginkit/FormatError.h"
#include "pluginkit/Utf.h"

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

/// Begins with the file's own name, which tells whoever finds it after a kill what it belongs to;
/// not where that is nearly as long as the system allows.
std::string TemporaryName(const std::filesystem::path& file)
{
    constexpr std::size_t longest = 255;
    std::random_device random;
    std::array<char, 32> end{};
    std::snprintf(end.data(), end.size(), ".relink-%08x%08x.tmp", random(), random());
    std::string name = PathToUtf8(file.filename());
    if (!name.starts_with('.'))
        name.insert(0, 1, '.');
    name += end.data();
    return name.size() <= longest ? name : end.data();
}

} // namespace

struct ReplacementFile::State
{
    std::filesystem::path file;
    std::filesystem::path temporary;
    Platform::Handle handle = Platform::NoHandle;

    explicit State(const std::filesystem::path& source) : file(Platform::Resolved(source)) {}
    ~State();
    State(const State&) = delete;
    State& operator=(const State&) = delete;

    void CreateTemporary();
    void Close() noexcept;
    void RequireUnchanged(const FileStamp& stamp) const;
    void TakePlace(const FileStamp& stamp) const;
};

ReplacementFile::State::~State()
{
    Close();
    if (!temporary.empty())
        Platform::Remove(temporary); // Commit may have made it as read-only as the original
}

void ReplacementFile::State::CreateTemporary()
{
    constexpr int attempts = 100;
    for (int i = 0; i < attempts && handle == Platform::NoHandle; ++i) {
        std::filesystem::path candidate = file.parent_path() / PathFromUtf8(TemporaryName(file));
        handle = Platform::CreateExclusively(candidate);
        if (handle != Platform::NoHandle)
            temporary = std::move(candidate);
    }
    if (handle == Platform::NoHandle)
        throw FormatError("a temporary file cannot be made: every name tried is taken");
}

void ReplacementFile::State::Close() noexcept
{
    if (handle != Platform::NoHandle)
        Platform::Close(handle);
    handle = Platform::NoHandle;
}

void ReplacementFile::State::RequireUnchanged(const FileStamp& stamp) const
{
    if (InputFile(file).m_state->stamp != stamp)
        throw FormatError("the file was changed by someone else meanwhile");
}

void ReplacementFile::State::TakePlace(const FileStamp& stamp) const
{
    const auto end = std::chrono::steady_clock::now() + Patience;
    for (;;) {
        try {
            RequireUnchanged(stamp);
            return Platform::RenameOver(temporary, file);
        } catch (const HeldError&) {
            if (std::chrono::steady_clock::now() >= end)
                throw;
        }
        std::this_thread::sleep_for(20ms);
    }
}

ReplacementFile::ReplacementFile(InputFile& source)
    : m_source(source), m_state(std::make_unique<State>(source.Path()))
{
    m_state->CreateTemporary();
}

ReplacementFile::~ReplacementFile() = default;

void ReplacementFile::Write(std::string_view bytes)
{
    Platform::WriteAll(m_state->handle, bytes);
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

void ReplacementFile::Commit()
{
    Platform::CopyPermissions(m_state->file, m_state->temporary, m_state->handle);
    Platform::FlushToDisk(m_state->handle);
    m_state->Close();
    m_source.Close();
    m_state->TakePlace(m_source.m_state->stamp);
    m_state->temporary.clear();
}

} // namespace Halvern::PluginKit
