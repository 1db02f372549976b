// SPDX-License-Identifier: Apache-2.0

#include "base/Directory.h"

#include "base/Utf.h"

namespace Halvern::Base {

std::optional<std::string> NameOfEntry(std::u16string_view name)
{
    if (name == u"." || name == u"..")
        return std::nullopt;
    return ToUtf8(name);
}

} // namespace Halvern::Base
