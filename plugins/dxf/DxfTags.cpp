// SPDX-License-Identifier: Apache-2.0

#include "DxfTags.h"

#include <charconv>

namespace Halvern::Formats::Dxf {

std::string_view Tag::Word() const
{
    constexpr std::string_view blanks = " \t";
    const std::size_t first = text.find_first_not_of(blanks);
    if (first == std::string::npos)
        return {};
    return std::string_view(text).substr(first, text.find_last_not_of(blanks) + 1 - first);
}

std::optional<long> Tag::Number() const
{
    const std::string_view word = Word();
    long number = 0;
    const auto [rest, error] = std::from_chars(word.data(), word.data() + word.size(), number);
    if (error != std::errc() || rest != word.data() + word.size())
        return std::nullopt;
    return number;
}

std::unique_ptr<TagReader> TagsOf(const InputFile& file)
{
    if (BinaryTags::Begins(file))
        return std::make_unique<BinaryTags>(file);
    return std::make_unique<AsciiTags>(file);
}

} // namespace Halvern::Formats::Dxf
