// SPDX-License-Identifier: Apache-2.0

#include "SlvsPaths.h"

#include "IdCounter.h"
#include "KitNames.h"
#include "pluginkit/FileScanner.h"
#include "pluginkit/FormatError.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace Halvern::Formats::SolveSpace {

namespace {

/// Three signs of Latin-1 stand in front of it, which some tools make UTF-8.
constexpr std::string_view Beginning = "SolveSpaceREV";
constexpr std::size_t MaxBeginning = 64;
/// What is longer is cut off: no key and no word is.
constexpr std::size_t MaxLine = MaxSlvsPath + 64;
constexpr std::size_t MaxHandle = 16;

struct Line
{
    std::string text;
    std::uint64_t begin = 0;
    bool isCut = false;
    /// Its end is in the file.
    bool isWhole = false;
};

class LineReader
{
public:
    explicit LineReader(const InputFile& file) : m_scanner(file) {}

    std::uint64_t Position() const { return m_scanner.Position(); }

    /// Without its end; false at the end of the file.
    bool Next(Line& line)
    {
        line.text.clear();
        line.begin = m_scanner.Position();
        line.isCut = false;
        if (m_scanner.AtEnd())
            return false;
        std::optional<char> c = m_scanner.Next();
        for (; c && c != '\n'; c = m_scanner.Next()) {
            if (line.text.size() < MaxLine) {
                line.text.push_back(*c);
                continue;
            }
            line.isCut = true;
            m_scanner.SkipTo("\n");
        }
        line.isWhole = c.has_value();
        // As SolveSpace has it, for files that went through mail.
        line.text.resize(std::min(line.text.find('\r'), line.text.size()));
        return true;
    }

private:
    FileScanner m_scanner;
};

bool IsHexDigit(char c)
{
    return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}

/// What is no "key=value": the end of a record, a shape, or the numbers of a group.
bool IsKnownWord(std::string_view line)
{
    constexpr std::array<std::string_view, 8> words = {
        "Add", "Triangle ", "Surface ", "SCtrl ", "TrimBy ", "Curve ", "CCtrl ", "CurvePt "};
    return line.empty() || line == "}" || line.starts_with(' ') ||
           std::any_of(words.begin(), words.end(),
                       [&](std::string_view word) { return line.starts_with(word); });
}

/// A word without the end of its line may be the beginning of a longer one.
bool EndsRecord(const Line& line)
{
    constexpr std::array<std::string_view, 6> endings = {"AddConstraint", "AddEntity",  "AddGroup",
                                                         "AddParam",      "AddRequest", "AddStyle"};
    return line.isWhole ? line.text.starts_with("Add")
                        : std::find(endings.begin(), endings.end(), line.text) != endings.end();
}

/// The paths of the record of one kind that is being read.
struct Record
{
    std::string_view kind;
    std::string_view id;
    std::string_view handleKey;
    std::string_view pathKey;
    /// Empty where there is none.
    std::string_view absoluteKey;
    std::string_view ending;

    std::string handle = {};
    SlvsPath path = {};
    SlvsPath absolute = {};

    bool IsEmpty() const { return path.raw.empty() && absolute.raw.empty(); }
};

class Finder
{
public:
    explicit Finder(const InputFile& file) : m_lines(file) {}

    std::vector<SlvsPath> Run()
    {
        RequireBeginning();
        Line line;
        while (m_lines.Next(line))
            Take(line);
        if (m_isWithinRecord)
            ThrowCutOff();
        return std::move(m_paths);
    }

private:
    void RequireBeginning()
    {
        Line line;
        if (!m_lines.Next(line) ||
            line.text.substr(0, MaxBeginning).find(Beginning) == std::string::npos)
            throw FormatError("no model of SolveSpace: its first line has no SolveSpaceREV", 0);
    }

    [[noreturn]] void ThrowCutOff() const
    {
        throw FormatError("the file ends within a record", m_lines.Position());
    }

    void Take(const Line& line)
    {
        const std::size_t equals = line.text.find('=');
        if (equals != std::string::npos)
            return TakeValue(line, equals);
        if (!line.isWhole && !EndsRecord(line))
            ThrowCutOff();
        if (!IsKnownWord(line.text))
            throw FormatError("a line that no model has", line.begin);
        if (EndsRecord(line))
            m_isWithinRecord = false;
        for (Record& record : m_records) {
            if (line.text == record.ending)
                Finish(record);
        }
    }

    void TakeValue(const Line& line, std::size_t equals)
    {
        m_isWithinRecord = true;
        const std::string_view key = std::string_view(line.text).substr(0, equals);
        for (Record& record : m_records) {
            if (!key.starts_with(record.kind))
                continue;
            if (key == record.handleKey)
                record.handle = Handle(line, equals + 1);
            else if (key == record.pathKey)
                Keep(record.path, line, equals + 1);
            else if (!record.absoluteKey.empty() && key == record.absoluteKey)
                Keep(record.absolute, line, equals + 1);
        }
    }

    static std::string Handle(const Line& line, std::size_t begin)
    {
        std::string handle = line.text.substr(begin);
        if (handle.empty() || handle.size() > MaxHandle ||
            !std::all_of(handle.begin(), handle.end(), IsHexDigit))
            throw FormatError("a handle that is no number", line.begin + begin);
        return handle;
    }

    static void Keep(SlvsPath& path, const Line& line, std::size_t begin)
    {
        if (line.isCut || line.text.size() - begin > MaxSlvsPath)
            throw FormatError("a path of more than " + std::to_string(MaxSlvsPath) + " bytes",
                              line.begin + begin);
        path.raw = line.text.substr(begin);
        path.begin = line.begin + begin;
        path.end = line.begin + line.text.size();
    }

    void Finish(Record& record)
    {
        if (!record.IsEmpty()) {
            const std::string id = m_ids.Next(std::string(record.id) + ' ' + record.handle);
            record.absolute.isSpare = !record.path.raw.empty();
            Add(record.absolute, id + " absolute");
            Add(record.path, id);
        }
        record.handle.clear();
        record.path = record.absolute = {};
    }

    void Add(SlvsPath& path, std::string id)
    {
        if (path.raw.empty())
            return;
        if (m_paths.size() == MaxSlvsPaths)
            throw FormatError("more than " + std::to_string(MaxSlvsPaths) + " links", path.begin);
        path.id = std::move(id);
        m_paths.push_back(std::move(path));
    }

    LineReader m_lines;
    bool m_isWithinRecord = false;
    std::array<Record, 3> m_records = {
        {{"Group.", "group", "Group.h.v", "Group.impFileRel", "Group.impFile", "AddGroup"},
         {"Request.", "request", "Request.h.v", "Request.file", "", "AddRequest"},
         {"Entity.", "entity", "Entity.h.v", "Entity.file", "", "AddEntity"}}};
    IdCounter m_ids;
    std::vector<SlvsPath> m_paths;
};

} // namespace

std::vector<SlvsPath> FindSlvsPaths(const InputFile& file)
{
    return Finder(file).Run();
}

} // namespace Halvern::Formats::SolveSpace
