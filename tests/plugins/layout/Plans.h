// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "layout/LinkedFiles.h"

#include <map>
#include <string>
#include <vector>

namespace Halvern::Test {

/// Plans as a test writes them, without a host:
///
///     Plan plan("/p/scene/a.gltf", "/cloud/Demo/a.gltf");
///     plan.Links("/p/lib/b.png");
///     PlaceFiles(plan.linked, {});
///     EXPECT_EQ(plan.Target("/p/lib/b.png"), "/cloud/Demo/lib/b.png");
struct Plan
{
    Plan(const std::string& top, const std::string& target);

    /// Adds a file; with a target it is there from an earlier import.
    Formats::Layout::LinkedFile& Links(const std::string& source, const std::string& target = {});
    /// Bonds between files added before.
    void Companion(const std::string& owner, const std::string& member);
    void Set(const std::string& owner, const std::vector<std::string>& members);

    std::string Target(const std::string& source);
    /// Every target by its source.
    std::map<std::string, std::string> Targets();
    Formats::Layout::LinkedFile& File(const std::string& source);

    Formats::Layout::LinkedFiles linked;

private:
    std::size_t IndexOf(const std::string& source);
};

} // namespace Halvern::Test
