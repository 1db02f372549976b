// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <CLI/CLI.hpp>

#include <string>
#include <utility>
#include <vector>

namespace Halvern::Cli {

/// Names in the order in which a usage error lists them.
template <typename Value>
using NamedValues = std::vector<std::pair<std::string, Value>>;

/// The option takes one of the names, each for a value.
template <typename Value>
void TakesOneOf(CLI::Option* option, const NamedValues<Value>& values)
{
    std::vector<std::string> names;
    for (const auto& [name, value] : values)
        names.push_back(name);
    // The one that is added last comes first: it refuses in words what the other does not know.
    option->transform(CLI::Transformer(values).description(""));
    option->transform(CLI::IsMember(names).description(""));
}

} // namespace Halvern::Cli
