// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "Blocks.h"

#include <string>
#include <unordered_map>
#include <vector>

namespace Halvern::Formats::Blender {

/// A member of a struct, at any depth.
struct DnaField
{
    std::uint64_t offset = 0;
    std::uint64_t size = 0;
    /// Of the struct or number; for a pointer, what it points at.
    std::string type;
    bool isPointer = false;
};

struct DnaStruct
{
    std::string name;
    std::uint64_t size = 0;
    /// In order, by name without "*" and "[]".
    std::vector<std::pair<std::string, DnaField>> fields;
};

/// The description that every file carries of the structs it is made of. Struct layouts differ from
/// version to version and from machine to machine: offsets come from here and nowhere else.
class Dna
{
public:
    /// Checks every count and size; throws FormatError with positions counted from `position`.
    Dna(std::string_view bytes, const MachineForm& form, std::uint64_t position);

    /// Null for an index beyond the last struct.
    const DnaStruct* StructAt(std::uint64_t index) const;
    /// Null when the file's version has no such struct.
    const DnaStruct* Find(const std::string& name) const;
    /// A member such as "id.name"; nothing when the struct has none.
    std::optional<DnaField> FindField(const DnaStruct& structure, std::string_view path) const;
    /// True for what Blender calls a data block: a struct that begins with an "ID id".
    static bool IsDataBlock(const DnaStruct& structure);

private:
    std::vector<DnaStruct> m_structs;
    std::unordered_map<std::string, std::size_t> m_indexes;
};

} // namespace Halvern::Formats::Blender
