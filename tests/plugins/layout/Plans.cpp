// SPDX-License-Identifier: Apache-2.0

#include "Plans.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace Halvern::Test {

using Formats::Layout::Bond;
using Formats::Layout::LinkedFile;
using Formats::Layout::TreePath;

Plan::Plan(const std::string& top, const std::string& target)
{
    Links(top, target).isFixed = true;
    RaiseBase(linked);
}

LinkedFile& Plan::Links(const std::string& source, const std::string& target)
{
    LinkedFile& file = linked.files.emplace_back();
    file.source = TreePath::Parse(source).value();
    file.target = TreePath::Parse(target);
    file.wasPlaced = file.target.has_value();
    return file;
}

std::size_t Plan::IndexOf(const std::string& source)
{
    for (std::size_t index = 0; index < linked.files.size(); ++index)
        if (linked.files[index].source.Text() == source)
            return index;
    throw std::invalid_argument(source + " is not in the plan");
}

LinkedFile& Plan::File(const std::string& source)
{
    return linked.files[IndexOf(source)];
}

void Plan::Companion(const std::string& owner, const std::string& member)
{
    linked.bonds.push_back(Bond{IndexOf(owner), IndexOf(member), {}});
}

void Plan::Set(const std::string& owner, const std::vector<std::string>& members)
{
    for (const std::string& member : members)
        linked.bonds.push_back(Bond{IndexOf(owner), IndexOf(member), "set:1"});
}

std::string Plan::Target(const std::string& source)
{
    const LinkedFile& file = File(source);
    return file.target ? file.target->Text() : std::string();
}

std::map<std::string, std::string> Plan::Targets()
{
    std::map<std::string, std::string> targets;
    for (const LinkedFile& file : linked.files)
        targets[file.source.Text()] = file.target ? file.target->Text() : std::string();
    return targets;
}

} // namespace Halvern::Test
