// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "syncplugin/FileLinkInfo.h"

#include <cstddef>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

namespace Halvern::PluginKit {

// Text as files have it (UTF-8, mostly) and as it crosses the contract (UTF-16). Only a lack of
// memory throws.

using WideString = std::basic_string<SyncPlugin::WideChar>;
using WideView = std::basic_string_view<SyncPlugin::WideChar>;

/// Nothing for text with a lone surrogate.
std::optional<std::string> ToUtf8(WideView text);
/// A lone surrogate becomes U+FFFD.
std::string ToUtf8Lossy(WideView text);
/// Nothing for bytes that are no UTF-8 (overlong forms and encoded surrogates are none either).
std::optional<WideString> ToUtf16(std::string_view text);
/// For messages: what is no UTF-8 becomes U+FFFD.
WideString ToUtf16Lossy(std::string_view text);
bool IsUtf8(std::string_view text);
/// Text as UTF-8: bytes that are none are taken for Latin-1, which programs for Windows used to
/// write.
std::string Utf8OrLatin1(std::string_view bytes);
/// Requires: `code` is a character of Unicode, no surrogate.
void AppendUtf8(std::string& text, char32_t code);

/// The file that UTF-8 text names. What is no UTF-8 names none on Windows, and never throws.
std::filesystem::path PathFromUtf8(std::string_view text);
/// With forward slashes, and never throws: on Windows a name may be no valid text.
std::string PathToUtf8(const std::filesystem::path& path);

} // namespace Halvern::PluginKit
