// SPDX-License-Identifier: Apache-2.0

#include "base/FileResult.h"

#include <system_error>

namespace Halvern::Base {

std::string SystemErrorText(std::uint32_t code)
{
    return std::generic_category().message(static_cast<int>(code));
}

} // namespace Halvern::Base
