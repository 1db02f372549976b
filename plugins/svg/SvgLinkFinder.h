// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "UriReference.h"

#include <string_view>
#include <vector>

namespace Halvern::Formats::Svg {

/// More references than this are refused rather than kept.
inline constexpr std::size_t MaxReferences = 1'000'000;
/// A style sheet inside a document needs several times its size in memory.
inline constexpr std::size_t MaxStyleSheet = std::size_t(16) << 20;

/// Every address in a drawing, made UTF-8 whatever it announces, whether it names a file or not, in
/// the order of the text. Throws FormatError; positions count in `xml`.
std::vector<UriReference> FindSvgReferences(std::string_view xml);

/// The same for a style sheet, which must be UTF-8.
std::vector<UriReference> FindCssReferences(std::string_view css);

} // namespace Halvern::Formats::Svg
