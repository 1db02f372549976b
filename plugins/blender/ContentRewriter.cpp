// SPDX-License-Identifier: Apache-2.0

#include "ContentRewriter.h"

#include "ZstdSeekTable.h"

#include "KitNames.h"
#include "pluginkit/Compression.h"
#include "pluginkit/FormatError.h"
#include "pluginkit/ReplacementFile.h"

#include <algorithm>
#include <array>

namespace Halvern::Formats::Blender {

namespace {

/// Passes content on with the edits made, piece by piece.
class EditedContent
{
public:
    explicit EditedContent(const std::vector<FileEdit>& edits)
        : m_next(edits.begin()), m_end(edits.end())
    {}

    template <typename Write>
    void Pass(std::string_view bytes, const Write& write)
    {
        while (!bytes.empty()) {
            const bool inside = m_next != m_end && m_position >= m_next->begin;
            if (inside && m_position == m_next->begin)
                write(m_next->replacement);
            const std::uint64_t until = m_next == m_end ? UINT64_MAX
                                        : inside        ? m_next->end
                                                        : m_next->begin;
            const std::string_view part =
                bytes.substr(0, std::min<std::uint64_t>(bytes.size(), until - m_position));
            if (!inside)
                write(part);
            bytes.remove_prefix(part.size());
            m_position += part.size();
            if (inside && m_position == m_next->end)
                ++m_next;
        }
    }

    /// True when a span of this size, which begins here, can be copied as it is.
    bool IsUntouched(std::uint64_t size) const
    {
        return m_next == m_end || m_next->begin >= m_position + size;
    }
    void Skip(std::uint64_t size) { m_position += size; }

private:
    std::vector<FileEdit>::const_iterator m_next;
    std::vector<FileEdit>::const_iterator m_end;
    std::uint64_t m_position = 0;
};

/// Reads everything that the decompressor gives and writes it, edited.
template <typename Write>
void PassAll(Decompressor& from, EditedContent& content, const Write& write)
{
    std::array<char, std::size_t(16) * 1024> buffer;
    while (const std::size_t got = from.Read(buffer.data(), buffer.size()))
        content.Pass({buffer.data(), got}, write);
}

void RewriteStream(const InputFile& file, Compression compression,
                   const std::vector<FileEdit>& edits, ReplacementFile& replacement)
{
    Decompressor from(file, DecompressedLimit(file.Size()));
    Compressor to(compression, [&](std::string_view bytes) { replacement.Write(bytes); });
    EditedContent content(edits);
    PassAll(from, content, [&](std::string_view bytes) { to.Write(bytes); });
    to.Finish();
}

/// The frame that lies at `begin`, edited and compressed again; writes it.
ZstdFrame RewriteFrame(const InputFile& file, std::uint64_t begin, const ZstdFrame& frame,
                       EditedContent& content, ReplacementFile& replacement)
{
    ZstdFrame result;
    Decompressor from(file, Compression::Zstd, begin, begin + frame.size, frame.contentSize);
    Compressor to(Compression::Zstd, [&](std::string_view bytes) {
        result.size += bytes.size();
        replacement.Write(bytes);
    });
    PassAll(from, content, [&](std::string_view bytes) {
        result.contentSize += bytes.size();
        to.Write(bytes);
    });
    to.Finish();
    return result;
}

void RewriteFrames(const InputFile& file, std::vector<ZstdFrame> frames,
                   const std::vector<FileEdit>& edits, ReplacementFile& replacement)
{
    EditedContent content(edits);
    std::uint64_t begin = 0;
    for (ZstdFrame& frame : frames) {
        const std::uint64_t size = frame.size;
        if (content.IsUntouched(frame.contentSize)) {
            replacement.CopyFromSource(begin, size);
            content.Skip(frame.contentSize);
        } else {
            frame = RewriteFrame(file, begin, frame, content, replacement);
        }
        begin += size;
    }
    replacement.Write(ZstdSeekTable(frames));
}

/// Positions of edits are counted in what the frames hold, not in what the table says of them.
void RequireTrueFrames(const InputFile& file, const std::vector<ZstdFrame>& frames)
{
    std::array<char, std::size_t(16) * 1024> buffer;
    std::uint64_t begin = 0;
    for (const ZstdFrame& frame : frames) {
        Decompressor from(file, Compression::Zstd, begin, begin + frame.size, UINT64_MAX);
        std::uint64_t left = frame.contentSize;
        while (const std::size_t got = from.Read(buffer.data(), buffer.size())) {
            if (got > left)
                throw FormatError("a zstd frame holds more than the table of frames says", begin);
            left -= got;
        }
        if (left > 0)
            throw FormatError("a zstd frame holds less than the table of frames says", begin);
        begin += frame.size;
    }
}

} // namespace

void ReplaceContent(InputFile& file, std::vector<FileEdit> edits)
{
    const Compression compression = CompressionOf(file);
    if (compression == Compression::None) {
        ReplaceSpans(file, std::move(edits));
        return;
    }
    std::sort(edits.begin(), edits.end(),
              [](const FileEdit& a, const FileEdit& b) { return a.begin < b.begin; });
    ReplacementFile replacement(file);
    const auto frames = compression == Compression::Zstd ? ReadZstdSeekTable(file) : std::nullopt;
    if (frames) {
        RequireTrueFrames(file, *frames);
        RewriteFrames(file, *frames, edits, replacement);
    } else {
        RewriteStream(file, compression, edits, replacement);
    }
    replacement.Commit();
}

} // namespace Halvern::Formats::Blender
