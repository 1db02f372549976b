// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <string>
#include <string_view>

namespace Halvern::Formats::Dxf {

/// How a drawing writes text: UTF-8 from AC1021 on, before that a code page, in both cases with
/// escapes for other characters.
///
///     Gr\U+00F6\U+00DFe.png    Größe.png
///     \M+1967E.png             本.png
///     a^ b.png                 a^b.png
class DxfText
{
public:
    /// What $ACADVER and $DWGCODEPAGE say; empty when they are not there.
    DxfText(std::string_view version, std::string_view codePage);

    /// Never fails: bytes that the code page has not are taken for UTF-8 or else Latin-1.
    std::string Decode(std::string_view raw) const;
    /// Throws FormatError for line ends and what else no text of a drawing can hold.
    std::string Encode(std::string_view text) const;

private:
    /// As the kit knows it.
    std::string m_encoding;
};

} // namespace Halvern::Formats::Dxf
