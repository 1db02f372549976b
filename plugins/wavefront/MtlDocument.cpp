// SPDX-License-Identifier: Apache-2.0

#include "MtlDocument.h"

#include "KitNames.h"
#include "pluginkit/LinkPaths.h"
#include "pluginkit/Utf.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <unordered_map>
#include <unordered_set>

namespace Halvern::Formats::Wavefront {

namespace {

constexpr std::size_t MaxMaterialName = 100;

bool IsMapStatement(std::string_view keyword)
{
    constexpr std::array<std::string_view, 5> others = {"bump", "decal", "disp", "norm", "refl"};
    if (keyword.starts_with("map_"))
        return keyword != "map_aat"; // anti-aliasing, on or off
    return std::find(others.begin(), others.end(), keyword) != others.end();
}

bool IsMaterialStatement(std::string_view keyword)
{
    return keyword == "newmtl" || IsMapStatement(keyword);
}

bool IsNumber(std::string_view word)
{
    if (word.starts_with('+'))
        word.remove_prefix(1);
    double number = 0;
    const auto [end, error] = std::from_chars(word.data(), word.data() + word.size(), number);
    return error == std::errc() && end == word.data() + word.size();
}

struct Option
{
    std::string_view name;
    std::size_t required;
    /// Numbers that may follow those.
    std::size_t optional;
};

constexpr std::array<Option, 14> Options = {{{"-blendu", 1, 0},
                                             {"-blendv", 1, 0},
                                             {"-bm", 1, 0},
                                             {"-boost", 1, 0},
                                             {"-cc", 1, 0},
                                             {"-clamp", 1, 0},
                                             {"-colorspace", 1, 0},
                                             {"-imfchan", 1, 0},
                                             {"-mm", 2, 0},
                                             {"-o", 1, 2},
                                             {"-s", 1, 2},
                                             {"-t", 1, 2},
                                             {"-texres", 1, 0},
                                             {"-type", 1, 0}}};

/// Where the name can begin.
struct NameStart
{
    /// After all that can belong to the options.
    std::size_t latest = 0;
    /// After what must belong to them.
    std::size_t earliest = 0;
};

NameStart StartOfName(const Statement& statement, const std::vector<Word>& words)
{
    const auto word = [&](std::size_t i) {
        return std::string_view(statement.text)
            .substr(words[i].begin, words[i].end - words[i].begin);
    };
    NameStart start;
    while (start.latest < words.size()) {
        const auto option = std::find_if(Options.begin(), Options.end(), [&](const Option& known) {
            return known.name == word(start.latest);
        });
        if (option == Options.end())
            break;
        start.earliest = std::min(start.latest + 1 + option->required, words.size());
        start.latest = start.earliest;
        for (std::size_t i = 0; i < option->optional; ++i) {
            if (start.latest < words.size() && IsNumber(word(start.latest)))
                ++start.latest;
        }
    }
    return start;
}

/// A name as the first part of an id, which has a limit.
std::string MaterialId(std::string_view name)
{
    std::string id = Utf8OrLatin1(name);
    std::replace_if(
        id.begin(), id.end(), [](char c) { return static_cast<unsigned char>(c) < 0x20; }, '?');
    if (id.size() > MaxMaterialName) {
        std::size_t end = MaxMaterialName;
        while ((static_cast<unsigned char>(id[end]) & 0xC0U) == 0x80)
            --end;
        id.resize(end);
    }
    return id;
}

std::string NameOf(const Statement& newMaterial)
{
    const std::vector<Word> words = newMaterial.Words();
    if (words.empty())
        return {};
    return newMaterial.text.substr(words.front().begin, words.back().end - words.front().begin);
}

} // namespace

MtlDocument::MtlDocument(const std::filesystem::path& path) : NamingDocument(path)
{
    StatementReader reader(File(), IsMaterialStatement, Continuation::None);
    std::unordered_map<std::string, std::size_t> used;
    std::unordered_set<std::string> ids;
    std::string material;
    while (std::optional<Statement> statement = reader.Next()) {
        if (statement->keyword == "newmtl") {
            material = MaterialId(NameOf(*statement));
            continue;
        }
        const std::vector<Word> words = statement->Words();
        if (words.empty())
            continue;
        const std::string base = material + '/' + statement->keyword;
        std::size_t& count = used[base];
        std::string id;
        // Once more where somebody wrote "map_kd#2", which is a keyword as good as any.
        do
            id = ++count == 1 ? base : base + '#' + std::to_string(count);
        while (!ids.insert(id).second);
        const NameStart start = StartOfName(*statement, words);
        Add(std::move(id), std::move(*statement), {start.latest, words.size()});
    }
}

std::vector<NameSpan> MtlDocument::SpansOf(const NamingStatement& statement) const
{
    const NameSpan usual = statement.Usual();
    const NameStart start = StartOfName(statement.Text(), statement.Words());
    const auto exists = [&](std::size_t first) {
        return first < usual.end &&
               NamesExistingFile(statement.PathOf({first, usual.end}, Folder()), Folder());
    };
    if (start.earliest < start.latest && !exists(start.latest)) {
        for (std::size_t first = start.latest; first-- > start.earliest;) {
            if (exists(first))
                return {{first, usual.end}};
        }
    }
    return usual.first < usual.end ? std::vector{usual} : std::vector<NameSpan>{};
}

std::string MtlDocument::Written(const NamingStatement& statement, const std::string& path) const
{
    const std::string_view first = std::string_view(path).substr(0, path.find(' '));
    const bool hasOptions = StartOfName(statement.Text(), statement.Words()).latest > 0;
    return first.starts_with('-') || (hasOptions && IsNumber(first)) ? "./" + path : path;
}

} // namespace Halvern::Formats::Wavefront
