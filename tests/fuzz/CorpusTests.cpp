// SPDX-License-Identifier: Apache-2.0

#include "Scratch.h"
#include "Target.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>

namespace Halvern::Fuzz {

namespace {

namespace fs = std::filesystem;

std::vector<fs::path> InputsOf(const std::string& target)
{
    std::vector<fs::path> inputs;
    for (const fs::directory_entry& entry : fs::directory_iterator(fs::path(FUZZ_CORPUS) / target))
        inputs.push_back(entry.path());
    std::sort(inputs.begin(), inputs.end());
    return inputs;
}

class FuzzCorpus : public ::testing::TestWithParam<Target>
{};

} // namespace

/// The inputs that fuzzing found to reach something new, and those that once did harm.
TEST_P(FuzzCorpus, DoesNoHarm)
{
    const std::vector<fs::path> inputs = InputsOf(GetParam().name);
    ASSERT_FALSE(inputs.empty());
    for (const fs::path& input : inputs) {
        try {
            GetParam().trial(ReadFile(input));
        } catch (const Violation& violation) {
            ADD_FAILURE() << input.filename() << ": " << violation.what();
        }
    }
}

TEST(FuzzTargets, HaveACorpusEachAndEveryCorpusHasATarget)
{
    std::set<std::string> targets;
    for (const Target& target : Targets())
        targets.insert(target.name);
    std::set<std::string> folders;
    for (const fs::directory_entry& entry : fs::directory_iterator(FUZZ_CORPUS))
        folders.insert(entry.path().filename().string());
    EXPECT_EQ(targets, folders);
}

INSTANTIATE_TEST_SUITE_P(Of, FuzzCorpus, ::testing::ValuesIn(Targets()),
                         [](const auto& target) { return std::string(target.param.name); });

} // namespace Halvern::Fuzz
