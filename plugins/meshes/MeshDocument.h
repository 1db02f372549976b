// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "KitNames.h"
#include "pluginkit/Document.h"
#include "pluginkit/FileEdits.h"
#include "pluginkit/InputFile.h"

#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

namespace Halvern::Formats::Meshes {

/// A number in a file that says how long a part of it is.
struct LengthField
{
    std::uint64_t at = 0;
    std::size_t size = 4;
    bool isBigEndian = false;
    std::uint64_t value = 0;
    /// The field of the part around it, which grows with it.
    std::optional<std::size_t> outer;
};

/// The name of a file.
struct NamedFile
{
    std::string id;
    /// As the file has it, without what ends it.
    std::string raw;
    /// The bytes that give way to another name: `raw` and what ends it.
    std::uint64_t begin = 0;
    std::uint64_t end = 0;
    /// The innermost length that counts these bytes.
    std::optional<std::size_t> length;
    /// It names a file only where one is there.
    bool needsFile = false;
};

/// A mesh with the names of files in it; a format adds them while it reads, and says how a name is
/// written. What is wrong with the file is a FormatError of the format's constructor.
class MeshDocument : public Document
{
public:
    explicit MeshDocument(const std::filesystem::path& path) : m_file(path) {}

    std::vector<DocumentLink> Links() const override;
    std::optional<std::string> UnlistedPathOf(const std::string& id) const override;
    void Rewrite(const NewPaths& paths) override;

protected:
    const InputFile& File() const { return m_file; }
    /// The id gets a number when another name has it. Throws a FormatError for too many names.
    void Add(NamedFile name);
    std::size_t AddLength(const LengthField& field);
    const LengthField& Length(std::size_t index) const { return m_lengths[index]; }

    /// The path that a name stands for, before slashes are set right.
    virtual std::string PathOf(std::string_view raw) const;
    /// The bytes for another name, `text` in the encoding that the old one has. Throws a
    /// FormatError when the format cannot hold it.
    virtual std::string Written(const NamedFile& old, const std::string& text) const = 0;

private:
    std::string LinkPath(const NamedFile& name) const;
    void Grow(std::map<std::size_t, std::int64_t>& growth, const NamedFile& name,
              std::size_t newSize) const;
    std::string NewLength(std::size_t index, std::int64_t growth) const;

    InputFile m_file;
    std::vector<NamedFile> m_names;
    std::map<std::string, std::size_t> m_byId;
    std::map<std::string, std::size_t> m_counts;
    std::vector<LengthField> m_lengths;
    std::size_t m_textSize = 0;
};

/// A name as the first part of an id.
std::string IdOf(std::string_view name);

} // namespace Halvern::Formats::Meshes
