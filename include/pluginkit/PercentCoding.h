// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>
#include <string_view>

namespace Halvern::PluginKit {

// Parts of URIs; FileUri.h does whole ones. Only a lack of memory throws.

/// The bytes that percent-encoded text stands for. A "%" without two hexadecimal digits after it
/// stands for itself, as lenient readers have it.
std::string PercentDecode(std::string_view text);

/// Text as a path inside a URI: letters, digits and the characters that RFC 3986 allows in a path
/// stay, "/" included; every other byte becomes "%XX".
std::string PercentEncodePath(std::string_view text);

} // namespace Halvern::PluginKit
