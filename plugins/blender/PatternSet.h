// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "FolderNames.h"
#include "StoredPath.h"

#include <set>

namespace Halvern::Formats::Blender {

/// A path in which one part differs from file to file.
struct NamePattern
{
    std::string before;
    std::string after;

    std::string With(std::string_view part) const;
};

/// Files of which the .blend file stores one name. The members that exist are found on the disk;
/// the id of each ends in the part of the name that is its own.
class PatternSet : public StoredPath
{
public:
    std::size_t LinkCount() const override { return m_parts.size(); }
    void AddLinks(std::vector<DocumentLink>& links) const override;
    std::optional<std::string> UnlistedPathOf(const std::string& id) const override;
    void RequireTogether(const NewPaths& wanted) const override;
    void AddEdits(const NewPaths& paths, const MachineForm& form,
                  std::vector<FileEdit>& edits) const override;

protected:
    /// `stored` is the part as it stands in the file's own text.
    PatternSet(std::string id, StoredText text, NamePattern pattern, std::string stored)
        : m_id(std::move(id)), m_text(std::move(text)), m_pattern(std::move(pattern)),
          m_stored(std::move(stored))
    {}

    const NamePattern& Pattern() const { return m_pattern; }
    const std::string& Stored() const { return m_stored; }
    void AddPart(const std::string& part) { m_parts.insert(part); }
    bool HasParts() const { return !m_parts.empty(); }
    void AddPartsOnDisk(FolderNames& folders);

    /// True for what can stand in the place of the stored part.
    virtual bool IsPart(std::string_view part) const = 0;
    /// The patterns that a path with this part may have, the most likely first.
    virtual std::vector<NamePattern> PatternsOf(const std::string& path,
                                                const std::string& part) const = 0;

private:
    using Members = std::vector<std::pair<std::string, std::string>>;

    Members MembersOf(const NewPaths& paths) const;
    NamePattern NewPattern(const Members& members) const;

    std::string m_id;
    StoredText m_text;
    NamePattern m_pattern;
    std::string m_stored;
    std::set<std::string> m_parts;
};

/// The tiles of an image: wood.<UDIM>.png stands for wood.1001.png and so on, and so does
/// wood.1001.png in files of Blender 2.82 to 3.0. The file lists them.
class TileSet : public PatternSet
{
public:
    /// Null when the text names no tiles.
    static std::unique_ptr<StoredPath> Make(const std::string& id, const StoredText& text,
                                            const std::vector<std::uint64_t>& tiles,
                                            FolderNames& folders);

protected:
    bool IsPart(std::string_view part) const override;
    std::vector<NamePattern> PatternsOf(const std::string& path,
                                        const std::string& part) const override;

private:
    using PatternSet::PatternSet;

    std::string PartOfTile(std::uint64_t tile) const;
};

/// Which digits of a name count the frames.
enum class FrameDigits
{
    /// The last ones of the name without its extension.
    Last,
    /// Only those directly in front of the extension.
    AtEnd
};

/// Where those digits begin and end in a path; nothing when there are none.
std::optional<std::pair<std::size_t, std::size_t>> DigitsIn(std::string_view path,
                                                            FrameDigits digits);

/// The frames of a sequence: wave_0007.png stands for wave_0001.png and so on, too.
class FrameSequence : public PatternSet
{
public:
    /// Null when the name has no digits: then it is a file like any other.
    static std::unique_ptr<StoredPath> Make(const std::string& id, const StoredText& text,
                                            FrameDigits digits, FolderNames& folders);

protected:
    bool IsPart(std::string_view part) const override;
    std::vector<NamePattern> PatternsOf(const std::string& path,
                                        const std::string& part) const override;

private:
    FrameSequence(std::string id, StoredText text, NamePattern pattern, const std::string& frame,
                  FrameDigits digits)
        : PatternSet(std::move(id), std::move(text), std::move(pattern), frame), m_digits(digits),
          m_width(frame.size())
    {}

    FrameDigits m_digits;
    std::size_t m_width;
};

} // namespace Halvern::Formats::Blender
