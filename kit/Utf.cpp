// SPDX-License-Identifier: Apache-2.0

#include "pluginkit/Utf.h"

#include "base/NativePath.h"
#include "base/Utf.h"

namespace Halvern::PluginKit {

namespace {

std::u16string_view Units(WideView text)
{
    static_assert(sizeof(SyncPlugin::WideChar) == sizeof(char16_t));
    return {reinterpret_cast<const char16_t*>(text.data()), text.size()};
}

WideString Wide(const std::u16string& text)
{
    return {text.begin(), text.end()};
}

} // namespace

void AppendUtf8(std::string& text, char32_t code)
{
    Base::AppendUtf8(text, code);
}

std::optional<std::string> ToUtf8(WideView text)
{
    return Base::ToUtf8(Units(text));
}

std::string ToUtf8Lossy(WideView text)
{
    return Base::ToUtf8Lossy(Units(text));
}

std::optional<WideString> ToUtf16(std::string_view text)
{
    const std::optional<std::u16string> units = Base::ToUtf16(text);
    return units ? std::optional(Wide(*units)) : std::nullopt;
}

WideString ToUtf16Lossy(std::string_view text)
{
    return Wide(Base::ToUtf16Lossy(text));
}

bool IsUtf8(std::string_view text)
{
    return Base::IsUtf8(text);
}

std::string Utf8OrLatin1(std::string_view bytes)
{
    if (IsUtf8(bytes))
        return std::string(bytes);
    std::string text;
    for (const char byte : bytes)
        AppendUtf8(text, static_cast<unsigned char>(byte));
    return text;
}

std::filesystem::path PathFromUtf8(std::string_view text)
{
    return Base::NativePath(text);
}

std::string PathToUtf8(const std::filesystem::path& path)
{
    return Base::PathToUtf8(path);
}

} // namespace Halvern::PluginKit
