// SPDX-License-Identifier: Apache-2.0

#include "PathText.h"
#include "PatternSet.h"

#include <algorithm>
#include <charconv>

namespace Halvern::Formats::Blender {

namespace {

constexpr std::string_view Udim = "<UDIM>";
constexpr std::string_view UvTile = "<UVTILE>";
constexpr std::uint64_t FirstTile = 1001;
constexpr std::uint64_t LastTile = 2000;
constexpr std::size_t TileDigits = 4;
constexpr std::uint64_t TilesPerRow = 10;

std::string UvName(std::uint64_t tile)
{
    const std::uint64_t index = tile - FirstTile;
    std::string name = "u";
    name.append(std::to_string(index % TilesPerRow + 1));
    return name.append("_v").append(std::to_string(index / TilesPerRow + 1));
}

std::optional<std::uint64_t> NumberIn(std::string_view text)
{
    std::uint64_t number = 0;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, number);
    return error == std::errc() && stop == end ? std::optional(number) : std::nullopt;
}

std::optional<std::uint64_t> TileOfUvName(std::string_view name)
{
    constexpr std::string_view between = "_v";
    const std::size_t middle = name.find(between);
    if (!name.starts_with('u') || middle == std::string_view::npos)
        return std::nullopt;
    const auto u = NumberIn(name.substr(1, middle - 1));
    const auto v = NumberIn(name.substr(middle + between.size()));
    if (!u || !v || *u == 0 || *u > TilesPerRow || *v == 0 || *v > LastTile)
        return std::nullopt;
    return FirstTile + (*v - 1) * TilesPerRow + *u - 1;
}

/// As Blender writes it: no zeros in front, no signs.
bool IsTileNumber(std::string_view text)
{
    const std::optional<std::uint64_t> number = NumberIn(text);
    return number && *number >= FirstTile && *number <= LastTile && text == std::to_string(*number);
}

bool IsSeparator(char c)
{
    return c == '.' || c == '_' || c == '-';
}

/// Where the number of a tile stands in a path without a token. Blender 2.82 to 3.0 took the last
/// digits of the name; later versions put a token in the place of a number between separators when
/// they open such a file.
std::optional<std::size_t> TileNumberIn(std::string_view path)
{
    const std::size_t name = path.rfind('/') + 1;
    for (std::size_t begin = path.size(); begin-- > name + 1;) {
        const std::size_t end = begin + TileDigits;
        if (end < path.size() && IsSeparator(path[begin - 1]) && IsSeparator(path[end]) &&
            IsTileNumber(path.substr(begin, TileDigits)))
            return begin;
    }
    const auto last = DigitsIn(path, FrameDigits::Last);
    if (last && IsTileNumber(path.substr(last->first, last->second - last->first)))
        return last->first;
    return std::nullopt;
}

/// The part of a path that stands for the tiles: where it begins, and its text.
std::optional<std::pair<std::size_t, std::string_view>> PartIn(std::string_view path)
{
    for (const std::string_view token : {Udim, UvTile}) {
        if (const std::size_t at = path.rfind(token); at != std::string_view::npos)
            return std::pair(at, token);
    }
    const std::optional<std::size_t> number = TileNumberIn(path);
    return number ? std::optional(std::pair(*number, path.substr(*number, TileDigits)))
                  : std::nullopt;
}

} // namespace

std::unique_ptr<StoredPath> TileSet::Make(const std::string& id, const StoredText& text,
                                          const std::vector<std::uint64_t>& tiles,
                                          FolderNames& folders)
{
    const std::string path = PathOfText(text.value);
    const auto part = PartIn(path);
    if (!part)
        return nullptr;
    const auto& [at, stored] = *part;
    NamePattern pattern = {path.substr(0, at), path.substr(at + stored.size())};
    std::unique_ptr<TileSet> set(new TileSet(id, text, std::move(pattern), std::string(stored)));
    for (const std::uint64_t tile : tiles) {
        if (tile >= FirstTile && tile <= LastTile)
            set->AddPart(set->PartOfTile(tile));
    }
    set->AddPartsOnDisk(folders);
    if (!set->HasParts())
        set->AddPart(set->PartOfTile(FirstTile));
    return set;
}

std::string TileSet::PartOfTile(std::uint64_t tile) const
{
    return Stored() == UvTile ? UvName(tile) : std::to_string(tile);
}

bool TileSet::IsPart(std::string_view part) const
{
    if (Stored() != UvTile)
        return IsTileNumber(part);
    const std::optional<std::uint64_t> tile = TileOfUvName(part);
    return tile && *tile >= FirstTile && *tile <= LastTile && part == UvName(*tile);
}

std::vector<NamePattern> TileSet::PatternsOf(const std::string& path, const std::string& part) const
{
    if (Stored() != Udim && Stored() != UvTile) {
        const std::optional<std::size_t> at = TileNumberIn(path);
        if (!at || path.compare(*at, part.size(), part) != 0)
            return {};
        return {{path.substr(0, *at), path.substr(*at + part.size())}};
    }
    std::vector<NamePattern> patterns;
    for (std::size_t at = path.rfind(part); at != std::string::npos;
         at = at == 0 ? std::string::npos : path.rfind(part, at - 1))
        patterns.push_back({path.substr(0, at), path.substr(at + part.size())});
    std::stable_partition(patterns.begin(), patterns.end(), [&](const NamePattern& pattern) {
        return pattern.after == Pattern().after;
    });
    return patterns;
}

} // namespace Halvern::Formats::Blender
