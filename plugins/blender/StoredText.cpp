// SPDX-License-Identifier: Apache-2.0

#include "StoredText.h"

#include "KitNames.h"
#include "pluginkit/FormatError.h"

#include <algorithm>

namespace Halvern::Formats::Blender {

namespace {

void AddGrowthEdits(const StoredText& text, const std::string& value, const MachineForm& form,
                    std::vector<FileEdit>& edits)
{
    constexpr std::size_t alignment = 4; // of all blocks
    const std::size_t size = (value.size() + alignment) / alignment * alignment;
    std::string bytes = value;
    bytes.resize(size, '\0');
    edits.push_back({*text.sizeField, *text.sizeField + text.sizeFieldSize,
                     form.Bytes(size, text.sizeFieldSize)});
    edits.push_back({text.begin, text.begin + text.room, std::move(bytes)});
}

} // namespace

StoredText TextIn(std::string_view bytes, std::uint64_t position)
{
    StoredText text;
    text.begin = position;
    text.room = bytes.size();
    text.value = bytes.substr(0, bytes.find('\0'));
    return text;
}

void AddTextEdits(const StoredText& text, const std::string& value, const std::string& id,
                  const MachineForm& form, std::vector<FileEdit>& edits)
{
    if (value == text.value)
        return;
    if (value.size() < text.room) {
        std::string bytes = value;
        bytes.resize(
            std::min<std::uint64_t>(std::max(value.size(), text.value.size()) + 1, text.room),
            '\0');
        const std::uint64_t end = text.begin + bytes.size();
        edits.push_back({text.begin, end, std::move(bytes)});
    } else if (text.sizeField) {
        AddGrowthEdits(text, value, form, edits);
    } else {
        throw FormatError("the new path of link " + id + ", " + value + ", has " +
                          std::to_string(value.size()) + " bytes; the file has room for " +
                          std::to_string(text.room - 1));
    }
}

} // namespace Halvern::Formats::Blender
