// SPDX-License-Identifier: Apache-2.0

#include "DirectXDocument.h"

#include "KitNames.h"
#include "pluginkit/FormatError.h"
#include "pluginkit/Utf.h"

#include <algorithm>

namespace Halvern::Formats::Meshes {

namespace {

constexpr std::uint64_t HeaderSize = 16;
constexpr std::size_t MaxNesting = 1000;
/// The longest type that names a file has fewer letters.
constexpr std::size_t MaxType = 64;

std::string LowerCase(std::string_view text)
{
    std::string lower(text);
    std::transform(lower.begin(), lower.end(), lower.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; });
    return lower;
}

} // namespace

DirectXDocument::DirectXDocument(const std::filesystem::path& path) : MeshDocument(path)
{
    // Others call their files so, too: interfaces of remote procedures, sources of scanners.
    constexpr std::string_view mark = "xof ";
    if (File().Read(0, std::min<std::uint64_t>(File().Size(), mark.size())) != mark)
        return;
    const std::string form = File().Read(8, 4);
    const std::string floats = File().Read(12, 4);
    if (floats != "0032" && floats != "0064")
        throw FormatError("numbers of neither 32 nor 64 bits", 12);
    if (form == "txt ")
        ReadDirectXText(File(), HeaderSize, *this);
    else if (form == "bin ")
        ReadDirectXBinary(File(), HeaderSize, floats == "0032" ? 4 : 8, *this);
    else if (form == "tzip" || form == "bzip")
        throw FormatError("compressed files of this format are not read", 8);
    else
        throw FormatError("neither text nor binary", 8);
    if (!m_open.empty())
        throw FormatError("the file ends inside brackets", File().Size());
}

/// The first word before a bracket is the type, a further one the object's name.
void DirectXDocument::Word(std::string_view word)
{
    if (m_type.empty())
        m_type = LowerCase(word.substr(0, MaxType));
}

void DirectXDocument::Open(std::uint64_t position)
{
    if (m_open.size() == MaxNesting)
        throw FormatError("nested deeper than " + std::to_string(MaxNesting) + " levels", position);
    m_open.push_back({std::move(m_type), 0});
    m_type.clear();
}

void DirectXDocument::Close(std::uint64_t position)
{
    if (m_open.empty())
        throw FormatError("a bracket that closes none", position);
    m_open.pop_back();
    m_type.clear();
}

void DirectXDocument::String(DirectXString string)
{
    m_type.clear();
    if (m_open.empty())
        return;
    Object& object = m_open.back();
    const std::size_t number = object.strings++;
    const bool isPicture = object.type == "texturefilename" && number == 0;
    const bool isEffect = object.type == "effectinstance" && number == 0;
    const bool isValue = object.type == "effectparamstring" && number == 1;
    if (string.raw.empty() || (!isPicture && !isEffect && !isValue))
        return;
    NamedFile name;
    name.id = isPicture ? "texture" : isEffect ? "effect" : "parameter";
    name.raw = std::move(string.raw);
    name.begin = string.begin;
    name.end = string.end;
    name.needsFile = isValue;
    if (string.lengthAt)
        name.length =
            AddLength({*string.lengthAt, 4, false, string.end - string.begin, std::nullopt});
    Add(std::move(name));
}

std::string DirectXDocument::PathOf(std::string_view raw) const
{
    std::string path = Utf8OrLatin1(raw);
    std::string once;
    for (std::size_t at = 0; at < path.size(); ++at) {
        once += path[at];
        if (at > 0 && path[at] == '\\' && at + 1 < path.size() && path[at + 1] == '\\')
            ++at;
    }
    return once;
}

std::string DirectXDocument::Written(const NamedFile& old, const std::string& text) const
{
    const bool isControl = std::any_of(text.begin(), text.end(),
                                       [](char c) { return static_cast<unsigned char>(c) < 0x20; });
    if (!old.length && (isControl || text.find('"') != std::string::npos))
        throw FormatError("a string of this format cannot name " + text, old.begin);
    return text;
}

} // namespace Halvern::Formats::Meshes
