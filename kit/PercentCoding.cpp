// SPDX-License-Identifier: Apache-2.0

#include "pluginkit/PercentCoding.h"

namespace Halvern::PluginKit {

namespace {

int HexValue(char digit)
{
    if (digit >= '0' && digit <= '9')
        return digit - '0';
    if (digit >= 'a' && digit <= 'f')
        return digit - 'a' + 10;
    if (digit >= 'A' && digit <= 'F')
        return digit - 'A' + 10;
    return -1;
}

bool StaysInPath(char c)
{
    if ((c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9'))
        return true;
    // Unreserved, sub-delims, and what a path segment may hold besides.
    return c != '\0' && std::string_view("-._~!$&'()*+,;=:@/").find(c) != std::string_view::npos;
}

} // namespace

std::string PercentDecode(std::string_view text)
{
    std::string result;
    result.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool escape = text[i] == '%' && text.size() - i > 2;
        const int high = escape ? HexValue(text[i + 1]) : -1;
        const int low = escape ? HexValue(text[i + 2]) : -1;
        if (high < 0 || low < 0) {
            result.push_back(text[i]);
            continue;
        }
        result.push_back(static_cast<char>(high * 16 + low));
        i += 2;
    }
    return result;
}

std::string PercentEncodePath(std::string_view text)
{
    constexpr char digits[] = "0123456789ABCDEF";
    std::string result;
    result.reserve(text.size());
    for (const char c : text) {
        if (StaysInPath(c)) {
            result.push_back(c);
            continue;
        }
        const auto byte = static_cast<unsigned char>(c);
        result.push_back('%');
        result.push_back(digits[byte >> 4]);
        result.push_back(digits[byte & 0xFU]);
    }
    return result;
}

} // namespace Halvern::PluginKit
