// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "Blocks.h"

#include "KitNames.h"
#include "pluginkit/FileEdits.h"

#include <optional>
#include <string>
#include <vector>

namespace Halvern::Formats::Blender {

/// A text of a file, ended by a zero: a field of fixed size, or a block of its own, which can grow.
struct StoredText
{
    std::uint64_t begin = 0;
    /// Bytes, the zero included.
    std::uint64_t room = 0;
    std::string value;
    /// Where the size of the block stands, if the text has one of its own.
    std::optional<std::uint64_t> sizeField;
    std::size_t sizeFieldSize = 4;
};

/// The text at the beginning of `bytes`; it need not be ended there.
StoredText TextIn(std::string_view bytes, std::uint64_t position);

/// Puts a text in the place of another: what is after the ends of both stays. Throws FormatError,
/// which names the link `id`, for one that does not fit.
void AddTextEdits(const StoredText& text, const std::string& value, const std::string& id,
                  const MachineForm& form, std::vector<FileEdit>& edits);

} // namespace Halvern::Formats::Blender
