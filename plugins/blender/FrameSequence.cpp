// SPDX-License-Identifier: Apache-2.0

#include "PathText.h"
#include "PatternSet.h"

#include <algorithm>

namespace Halvern::Formats::Blender {

namespace {

constexpr std::size_t MaxDigits = 9; // a frame is a signed number of 32 bits

bool IsDigit(char c)
{
    return c >= '0' && c <= '9';
}

} // namespace

std::optional<std::pair<std::size_t, std::size_t>> DigitsIn(std::string_view path,
                                                            FrameDigits digits)
{
    const std::size_t name = path.rfind('/') + 1;
    const std::size_t dot = path.rfind('.');
    std::size_t end = dot == std::string_view::npos || dot < name ? path.size() : dot;
    while (digits == FrameDigits::Last && end > name && !IsDigit(path[end - 1]))
        --end;
    std::size_t begin = end;
    while (begin > name && IsDigit(path[begin - 1]))
        --begin;
    if (begin == end || end - begin > MaxDigits)
        return std::nullopt;
    return std::pair(begin, end);
}

std::unique_ptr<StoredPath> FrameSequence::Make(const std::string& id, const StoredText& text,
                                                FrameDigits digits, FolderNames& folders)
{
    const std::string path = PathOfText(text.value);
    const auto place = DigitsIn(path, digits);
    if (!place)
        return nullptr;
    const auto [begin, end] = *place;
    const std::string frame = path.substr(begin, end - begin);
    NamePattern pattern = {path.substr(0, begin), path.substr(end)};
    std::unique_ptr<FrameSequence> set(
        new FrameSequence(id, text, std::move(pattern), frame, digits));
    set->AddPartsOnDisk(folders);
    if (!set->HasParts())
        set->AddPart(frame);
    return set;
}

/// Frames are padded with zeros to the width of the stored one, and longer when they must be.
bool FrameSequence::IsPart(std::string_view part) const
{
    const bool width = part.size() == m_width || (part.size() > m_width && part.front() != '0');
    return width && part.size() <= MaxDigits && std::all_of(part.begin(), part.end(), IsDigit);
}

std::vector<NamePattern> FrameSequence::PatternsOf(const std::string& path,
                                                   const std::string& part) const
{
    const auto place = DigitsIn(path, m_digits);
    if (!place || path.substr(place->first, place->second - place->first) != part)
        return {};
    return {{path.substr(0, place->first), path.substr(place->second)}};
}

} // namespace Halvern::Formats::Blender
