// SPDX-License-Identifier: Apache-2.0

#include "StructView.h"

#include "KitNames.h"
#include "pluginkit/FormatError.h"

namespace Halvern::Formats::Blender {

std::uint64_t StructView::Number(std::string_view path, std::uint64_t otherwise) const
{
    const std::optional<DnaField> field = m_dna.FindField(m_structure, path);
    if (!field || field->size > sizeof(std::uint64_t))
        return otherwise;
    return m_form.Number(m_bytes.substr(field->offset, field->size));
}

StoredText StructView::Text(std::initializer_list<std::string_view> paths) const
{
    for (const std::string_view path : paths) {
        const std::optional<DnaField> field = m_dna.FindField(m_structure, path);
        if (field && field->type == "char" && !field->isPointer)
            return TextIn(m_bytes.substr(field->offset, field->size), m_position + field->offset);
    }
    throw FormatError("the file's description of its structs gives " + m_structure.name +
                          " no text " + std::string(*paths.begin()),
                      m_position);
}

} // namespace Halvern::Formats::Blender
