// SPDX-License-Identifier: Apache-2.0

#include "PlyDocument.h"

#include "KitNames.h"
#include "pluginkit/FormatError.h"

#include <algorithm>

namespace Halvern::Formats::Meshes {

namespace {

/// No header of a real file comes near it.
constexpr std::uint64_t MaxHeader = std::uint64_t(1) << 20;
constexpr std::string_view Blanks = " \t";

std::string_view TakeWord(std::string_view& line)
{
    const std::size_t begin = std::min(line.find_first_not_of(Blanks), line.size());
    const std::size_t end = std::min(line.find_first_of(Blanks, begin), line.size());
    const std::string_view word = line.substr(begin, end - begin);
    line.remove_prefix(end);
    return word;
}

bool IsPictureKeyword(std::string_view word)
{
    constexpr std::string_view keyword = "texturefile";
    return std::equal(word.begin(), word.end(), keyword.begin(), keyword.end(), [](char a, char b) {
        return a == b || (a >= 'A' && a <= 'Z' && a + 32 == b);
    });
}

} // namespace

PlyDocument::PlyDocument(const std::filesystem::path& path) : MeshDocument(path)
{
    const std::string head = File().Read(0, std::min(File().Size(), MaxHeader));
    const std::size_t first = std::min(head.find_first_of("\r\n"), head.size());
    if (head.substr(0, first) != "ply")
        throw FormatError("a PLY file begins with a line \"ply\"", 0);
    for (std::size_t at = first; at < head.size();) {
        const std::size_t end = head.find_first_of("\r\n", at);
        if (end == std::string::npos)
            break;
        const std::string_view line = std::string_view(head).substr(at, end - at);
        if (line.starts_with("end_header"))
            return;
        ReadLine(line, at);
        at = end + 1;
    }
    if (head.size() < File().Size())
        throw FormatError("a header of more than 1 MiB", MaxHeader);
    throw FormatError("the file ends inside its header", File().Size());
}

/// "comment TextureFile wood.png", where the name goes to the end of the line.
void PlyDocument::ReadLine(std::string_view line, std::uint64_t begin)
{
    std::string_view rest = line;
    if (TakeWord(rest) != "comment" || !IsPictureKeyword(TakeWord(rest)))
        return;
    const std::size_t blanks = std::min(rest.find_first_not_of(Blanks), rest.size());
    const std::size_t last = rest.find_last_not_of(Blanks);
    if (blanks == rest.size())
        return;
    NamedFile name;
    name.id = "TextureFile";
    name.raw = rest.substr(blanks, last + 1 - blanks);
    name.begin = begin + (line.size() - rest.size()) + blanks;
    name.end = name.begin + name.raw.size();
    Add(std::move(name));
}

std::string PlyDocument::Written(const NamedFile& old, const std::string& text) const
{
    const auto isControl = [](char c) { return static_cast<unsigned char>(c) < 0x20; };
    if (text.front() == ' ' || text.back() == ' ' ||
        std::any_of(text.begin(), text.end(), isControl))
        throw FormatError("a line of this format cannot name " + text, old.begin);
    return text;
}

} // namespace Halvern::Formats::Meshes
