// SPDX-License-Identifier: Apache-2.0

#include "ProjectFile.h"

#include "SExpressions.h"

#include "KitNames.h"
#include "pluginkit/FormatError.h"

#include <rapidjson/error/en.h>
#include <rapidjson/memorystream.h>
#include <rapidjson/reader.h>

#include <map>

namespace Halvern::Formats::Kicad {

namespace {

using rapidjson::SizeType;

/// Follows the parser through the document. Arrays have an empty key of their own.
class Collector : public rapidjson::BaseReaderHandler<rapidjson::UTF8<>, Collector>
{
public:
    Collector(std::string_view json, const rapidjson::MemoryStream& stream, std::uint64_t start)
        : m_json(json), m_stream(stream), m_start(start)
    {}

    // A key that is repeated counts the last time, as for KiCad.
    std::map<std::string, StoredPath> found;

    bool Default()
    {
        RequireObject(!m_keys.empty());
        return true;
    }
    bool RawNumber(const char*, SizeType, bool) { return Default(); }
    bool String(const char* text, SizeType length, bool)
    {
        RequireObject(!m_keys.empty());
        const bool isSheet = m_keys.size() == 2 && m_keys[1] == "page_layout_descr_file" &&
                             (m_keys[0] == "pcbnew" || m_keys[0] == "schematic");
        if (!isSheet)
            return true;
        const std::size_t begin = m_json.find('"', m_keyEnd); // nothing but blanks and ":" between
        found[m_keys[0]] = {m_keys[0] + " sheet", std::string(text, length), PathBase::Project,
                            m_start + begin,      m_start + m_stream.Tell(), Notation::Json};
        return true;
    }
    bool Key(const char* text, SizeType length, bool)
    {
        m_keys.back().assign(text, length);
        m_keyEnd = m_stream.Tell();
        return true;
    }
    bool StartObject() { return Enter(); }
    bool EndObject(SizeType) { return Leave(); }
    bool StartArray()
    {
        RequireObject(!m_keys.empty());
        return Enter();
    }
    bool EndArray(SizeType) { return Leave(); }

private:
    void RequireObject(bool isOne) const
    {
        if (!isOne)
            throw FormatError("the document is no JSON object", m_start + m_stream.Tell());
    }

    bool Enter()
    {
        if (m_keys.size() == MaxNesting)
            throw FormatError("nested deeper than " + std::to_string(MaxNesting) + " levels",
                              m_start + m_stream.Tell());
        m_keys.emplace_back();
        return true;
    }

    bool Leave()
    {
        m_keys.pop_back();
        return true;
    }

    std::string_view m_json;
    const rapidjson::MemoryStream& m_stream;
    std::uint64_t m_start;
    std::vector<std::string> m_keys;
    std::size_t m_keyEnd = 0;
};

} // namespace

std::vector<StoredPath> FindDrawingSheets(const InputFile& file)
{
    if (file.Size() > MaxProjectSize)
        throw FormatError("the project file is larger than 64 MiB");
    const std::string content = file.Read(0, file.Size());
    constexpr std::string_view mark = "\xEF\xBB\xBF";
    const std::size_t start = content.starts_with(mark) ? mark.size() : 0;
    const std::string_view json = std::string_view(content).substr(start);
    constexpr unsigned flags = rapidjson::kParseIterativeFlag |
                               rapidjson::kParseValidateEncodingFlag |
                               rapidjson::kParseNumbersAsStringsFlag;
    rapidjson::MemoryStream stream(json.data(), json.size());
    rapidjson::Reader reader;
    Collector collector(json, stream, start);
    const rapidjson::ParseResult result = reader.Parse<flags>(stream, collector);
    if (result.IsError())
        throw FormatError(rapidjson::GetParseError_En(result.Code()), start + result.Offset());
    // The parser takes a NUL for the end of the text.
    if (stream.Tell() != json.size())
        throw FormatError("a NUL byte follows the document", start + stream.Tell());
    std::vector<StoredPath> sheets;
    for (auto& [key, sheet] : collector.found)
        if (!sheet.text.empty())
            sheets.push_back(std::move(sheet));
    return sheets;
}

std::string JsonString(std::string_view text)
{
    constexpr char digits[] = "0123456789abcdef";
    std::string result = "\"";
    for (const char c : text) {
        const auto code = static_cast<unsigned char>(c);
        if (c == '"' || c == '\\')
            result.append(1, '\\').append(1, c);
        else if (code < 0x20)
            result.append("\\u00").append(1, digits[code >> 4]).append(1, digits[code & 15]);
        else
            result += c;
    }
    return result + '"';
}

} // namespace Halvern::Formats::Kicad
