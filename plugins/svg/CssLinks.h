// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace Halvern::Formats::Svg {

/// An address in a style sheet.
struct CssLink
{
    /// "url" or "@import".
    std::string_view kind;
    /// Without quotation marks and escapes.
    std::string uri;
    /// The bytes of the address, without quotation marks.
    std::size_t begin;
    std::size_t end;
};

/// Every address that a style sheet, or the value of a property, holds in url() and after @import,
/// in their order; comments, strings of other meaning and names of namespaces are passed over. Like
/// every reader of style sheets it takes any text.
std::vector<CssLink> FindCssLinks(std::string_view css);

/// A URI as it may stand in a style sheet without or between quotation marks of either kind, and in
/// XML around that.
std::string CssUri(std::string_view uri);

} // namespace Halvern::Formats::Svg
