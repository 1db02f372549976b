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

} // namespace

std::unique_ptr<StoredPath> TileSet::Make(const std::string& id, const StoredText& text,
                                          const std::vector<std::uint64_t>& tiles,
                                          FolderNames& folders)
{
    const std::string path = PathOfText(text.value);
    for (const std::string_view token : {Udim, UvTile}) {
        const std::size_t at = path.rfind(token);
        if (at == std::string::npos)
            continue;
        NamePattern pattern = {path.substr(0, at), path.substr(at + token.size())};
        std::unique_ptr<TileSet> set(new TileSet(id, text, std::move(pattern), std::string(token)));
        for (const std::uint64_t tile : tiles) {
            if (tile >= FirstTile && tile <= LastTile)
                set->AddPart(set->PartOfTile(tile));
        }
        set->AddPartsOnDisk(folders);
        if (!set->HasParts())
            set->AddPart(set->PartOfTile(FirstTile));
        return set;
    }
    return nullptr;
}

std::string TileSet::PartOfTile(std::uint64_t tile) const
{
    return m_token == Udim ? std::to_string(tile) : UvName(tile);
}

bool TileSet::IsPart(std::string_view part) const
{
    const std::optional<std::uint64_t> tile = m_token == Udim ? NumberIn(part) : TileOfUvName(part);
    // Only as Blender writes it: no zeros in front, no signs.
    return tile && *tile >= FirstTile && *tile <= LastTile && part == PartOfTile(*tile);
}

std::vector<NamePattern> TileSet::PatternsOf(const std::string& path, const std::string& part) const
{
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
