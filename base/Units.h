// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>
#include <string_view>

namespace Halvern::Base {

/// The units of a text of Qt (QString, QStringView) as the functions of this folder take them,
/// without a copy: the text must outlive the view. Needs nothing of Qt; a view becomes a text again
/// by QStringView(view).toString().
template <typename QtText>
std::u16string_view Units(const QtText& text) noexcept
{
    static_assert(sizeof(*text.constData()) == sizeof(char16_t));
    return {reinterpret_cast<const char16_t*>(text.constData()),
            static_cast<std::size_t>(text.size())};
}
template <typename QtText>
std::u16string_view Units(const QtText&& text) = delete;

} // namespace Halvern::Base
