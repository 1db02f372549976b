// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "Dna.h"
#include "StoredText.h"

namespace Halvern::Formats::Blender {

/// One struct of a block, read by the names of its members.
class StructView
{
public:
    /// `bytes` holds the struct; everything must live as long as this.
    StructView(const Dna& dna, const DnaStruct& structure, const MachineForm& form,
               std::string_view bytes, std::uint64_t position)
        : m_dna(dna), m_structure(structure), m_form(form), m_bytes(bytes), m_position(position)
    {}

    /// `otherwise` where the file's version has no such member.
    std::uint64_t Number(std::string_view path, std::uint64_t otherwise = 0) const;
    /// The first of the members that the struct has: members were renamed over the years. Throws a
    /// FormatError when it has none of them.
    StoredText Text(std::initializer_list<std::string_view> paths) const;

private:
    const Dna& m_dna;
    const DnaStruct& m_structure;
    const MachineForm& m_form;
    std::string_view m_bytes;
    std::uint64_t m_position;
};

} // namespace Halvern::Formats::Blender
