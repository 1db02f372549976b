// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "Target.h"

#include <map>
#include <string>
#include <vector>

namespace Halvern::Fuzz {

struct Link
{
    std::string id;
    std::string path;
};
using Links = std::vector<Link>;
/// By their ids.
using Paths = std::map<std::string, std::string>;

/// Other paths for some of the links: such as layouts choose, and some that they would not. Those
/// of a set stay together under their names; what is found by its name stays.
Paths ChoosePaths(const Links& links, Choices& choices);

bool IsCompanion(const std::string& id);
bool IsInSet(const std::string& id);

} // namespace Halvern::Fuzz
