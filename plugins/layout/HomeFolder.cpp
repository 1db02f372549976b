// SPDX-License-Identifier: Apache-2.0

#include "Placement.h"

#include "base/KnownFolders.h"
#include "base/NativePath.h"

namespace Halvern::Formats::Layout {

std::optional<TreePath> HomeFolder()
{
    return TreePath::Parse(Base::PathToUtf8(Base::HomeFolder()));
}

} // namespace Halvern::Formats::Layout
