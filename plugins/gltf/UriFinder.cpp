// SPDX-License-Identifier: Apache-2.0

#include "UriFinder.h"

#include "KitNames.h"
#include "pluginkit/FileUri.h"

#include "pluginkit/FormatError.h"
#include "pluginkit/LinkArray.h"

#include <rapidjson/error/en.h>
#include <rapidjson/memorystream.h>
#include <rapidjson/reader.h>

#include <unordered_map>

namespace Halvern::Formats::Gltf {

namespace {

using rapidjson::SizeType;

/// An object or array that is being read.
struct Level
{
    bool isArray = false;
    bool insideExtras = false;
    bool insideExtensions = false;
    /// Of the current element.
    std::size_t index = 0;
    std::size_t started = 0;
    /// Of the current member.
    std::string key;
};

std::string PointerToken(const Level& level)
{
    if (level.isArray)
        return std::to_string(level.index);
    std::string token;
    for (const char c : level.key) {
        if (c == '~')
            token += "~0";
        else if (c == '/')
            token += "~1";
        else
            token += c;
    }
    return token;
}

/// Follows the parser through the document and notes the uris.
class UriCollector : public rapidjson::BaseReaderHandler<rapidjson::UTF8<>, UriCollector>
{
public:
    UriCollector(std::string_view json, const rapidjson::MemoryStream& stream,
                 std::uint64_t position)
        : m_json(json), m_stream(stream), m_position(position)
    {}

    std::vector<UriString> Take() { return std::move(m_uris); }

    bool Default()
    {
        BeginValue();
        return true;
    }
    // A number's value is never asked for, so that none is too large.
    bool RawNumber(const char*, SizeType, bool) { return Default(); }
    bool String(const char* text, SizeType length, bool)
    {
        BeginValue();
        const Level& level = m_levels.back();
        const std::string_view value(text, length);
        if (NamesFile(level) && IsLinkUri(value))
            Note(value);
        return true;
    }
    bool Key(const char* text, SizeType length, bool)
    {
        m_levels.back().key.assign(text, length);
        m_keyEnd = m_stream.Tell();
        return true;
    }
    bool StartObject() { return Enter(false); }
    bool StartArray() { return Enter(true); }
    bool EndObject(SizeType) { return Leave(); }
    bool EndArray(SizeType) { return Leave(); }

private:
    [[noreturn]] void Fail(const std::string& reason) const
    {
        throw FormatError(reason, m_position + m_stream.Tell());
    }

    /// Extensions for metadata call the file that describes it "schemaUri".
    static bool NamesFile(const Level& level)
    {
        if (level.isArray || level.insideExtras)
            return false;
        return level.key == "uri" || (level.insideExtensions && level.key == "schemaUri");
    }

    void BeginValue()
    {
        if (m_levels.empty())
            Fail("the document is no JSON object");
        Level& level = m_levels.back();
        if (level.isArray)
            level.index = level.started++;
    }

    bool Enter(bool isArray)
    {
        Level level;
        level.isArray = isArray;
        if (!m_levels.empty() || isArray) {
            BeginValue();
            const Level& outer = m_levels.back();
            const std::string_view key = outer.isArray ? std::string_view() : outer.key;
            level.insideExtras = outer.insideExtras || key == "extras";
            level.insideExtensions = outer.insideExtensions || key == "extensions";
        }
        if (m_levels.size() == MaxNesting)
            Fail("nested deeper than " + std::to_string(MaxNesting) + " levels");
        m_levels.push_back(std::move(level));
        return true;
    }

    bool Leave()
    {
        m_levels.pop_back();
        return true;
    }

    std::string Pointer() const
    {
        std::string pointer;
        for (const Level& level : m_levels)
            pointer += '/' + PointerToken(level);
        return pointer;
    }

    void Note(std::string_view value)
    {
        if (m_uris.size() == MaxLinks)
            Fail("more than " + std::to_string(MaxLinks) + " links");
        std::string pointer = Pointer();
        // Here rather than when the links are handed out: keys of a megabyte above a million uris
        // would fill the memory before.
        if (pointer.size() > MaxLinkUnits)
            LinkUnits("id", pointer, pointer);
        const std::size_t begin = m_json.find('"', m_keyEnd); // nothing but blanks and ":" between
        m_uris.push_back({std::move(pointer), std::string(value), begin, m_stream.Tell()});
    }

    std::string_view m_json;
    const rapidjson::MemoryStream& m_stream;
    std::uint64_t m_position;
    std::vector<Level> m_levels;
    std::size_t m_keyEnd = 0;
    std::vector<UriString> m_uris;
};

/// Keys may be repeated, by mistake; each string is still found again.
void TellRepeatedIdsApart(std::vector<UriString>& uris)
{
    std::unordered_map<std::string_view, std::size_t> seen;
    seen.reserve(uris.size());
    std::vector<std::size_t> occurrence(uris.size());
    for (std::size_t i = 0; i < uris.size(); ++i)
        occurrence[i] = ++seen[uris[i].id];
    seen.clear();
    for (std::size_t i = 0; i < uris.size(); ++i) {
        if (occurrence[i] > 1)
            uris[i].id += '#' + std::to_string(occurrence[i]);
    }
}

} // namespace

std::vector<UriString> FindUris(std::string_view json, std::uint64_t position)
{
    // Iterative: the parser's own stack is the heap, whatever the nesting.
    constexpr unsigned flags = rapidjson::kParseIterativeFlag |
                               rapidjson::kParseValidateEncodingFlag |
                               rapidjson::kParseNumbersAsStringsFlag;
    rapidjson::MemoryStream stream(json.data(), json.size());
    rapidjson::Reader reader;
    UriCollector collector(json, stream, position);
    const rapidjson::ParseResult result = reader.Parse<flags>(stream, collector);
    if (result.IsError())
        throw FormatError(rapidjson::GetParseError_En(result.Code()), position + result.Offset());
    // The parser takes a NUL for the end of the text.
    if (stream.Tell() != json.size())
        throw FormatError("a NUL byte follows the document", position + stream.Tell());
    std::vector<UriString> uris = collector.Take();
    TellRepeatedIdsApart(uris);
    return uris;
}

} // namespace Halvern::Formats::Gltf
