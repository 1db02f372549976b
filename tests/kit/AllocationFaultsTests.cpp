// SPDX-License-Identifier: Apache-2.0

// Calls of the contract when memory ends at any moment.

#include "FormatFixture.h"

#include "pluginkit/DocumentResolver.h"
#include "pluginkit/Exports.h"
#include "pluginkit/FileEdits.h"
#include "pluginkit/FormatError.h"

#include <cstdlib>
#include <new>

namespace {

enum class Shortage
{
    Once,
    FromThenOn
};

/// How many allocations of this thread still succeed; negative for all.
thread_local long allocationsLeft = -1;
thread_local Shortage shortage = Shortage::Once;

void* Allocate(std::size_t size) noexcept
{
    if (allocationsLeft == 0) {
        if (shortage == Shortage::Once)
            allocationsLeft = -1;
        return nullptr;
    }
    if (allocationsLeft > 0)
        --allocationsLeft;
    return std::malloc(size == 0 ? 1 : size);
}

} // namespace

void* operator new(std::size_t size)
{
    if (void* memory = Allocate(size))
        return memory;
    throw std::bad_alloc();
}

void* operator new(std::size_t size, const std::nothrow_t&) noexcept
{
    return Allocate(size);
}

void operator delete(void* memory) noexcept
{
    std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept
{
    std::free(memory);
}

namespace Halvern::Test {

namespace {

using namespace PluginKit;
using namespace Qt::StringLiterals;

/// A file that is one path.
class OnePath : public Document
{
public:
    explicit OnePath(const std::filesystem::path& path) : m_file(path) {}

    std::vector<DocumentLink> Links() const override
    {
        return {{"the only link of the file", m_file.Read(0, m_file.Size())}};
    }
    void Rewrite(const NewPaths& paths) override
    {
        ReplaceSpans(m_file, {{0, m_file.Size(), paths.begin()->second}});
    }

private:
    InputFile m_file;
};

/// A host that writes no log, so that all memory asked for is the kit's.
class SilentHost : public SyncPlugin::IFileLinkResolverContext, public SyncPlugin::IPluginLogger
{
public:
    SyncPlugin::IPluginLogger* GetLogger() override { return this; }
    void LogFatal(const SyncPlugin::WideChar*) override {}
    void LogError(const SyncPlugin::WideChar*) override { ++errors; }
    void LogWarn(const SyncPlugin::WideChar*) override {}
    void LogInfo(const SyncPlugin::WideChar*) override {}
    void LogDebug(const SyncPlugin::WideChar*) override {}
    void LogTrace(const SyncPlugin::WideChar*) override {}

    int errors = 0;
};

/// Calls with ever more memory, until it is enough. Returns how often it was not.
template <typename Call>
int FailuresUntilSuccess(const Call& call)
{
    for (int failures = 0; failures < 10'000; ++failures) {
        allocationsLeft = failures;
        const bool succeeded = call();
        allocationsLeft = -1;
        if (succeeded)
            return failures;
    }
    return -1;
}

class MemoryEnds : public ::testing::TestWithParam<Shortage>
{
protected:
    MemoryEnds()
    {
        shortage = GetParam();
        tree.File(m_name, Old);
    }

    static constexpr const char* Old = "../a folder with a name of some length/old.png";

    FileTree tree;
    const QString m_name = u"a.one"_s;
    const QString file = tree.Path(m_name);
    SilentHost host;
    DocumentResolverFor<OnePath> resolver;
};

class NeverMade : public DocumentResolverFor<OnePath>
{
public:
    NeverMade() { throw FormatError("no resolver today"); }
};

} // namespace

INSTANTIATE_TEST_SUITE_P(Shortages, MemoryEnds,
                         ::testing::Values(Shortage::Once, Shortage::FromThenOn),
                         [](const auto& row) {
                             return row.param == Shortage::Once ? "Once" : "FromThenOn";
                         });

TEST_P(MemoryEnds, WhileLinksAreReadAndTheHostGetsFalseAndNoArray)
{
    SyncPlugin::FileLinkInfo* links = nullptr;
    int count = -1;
    const int failures = FailuresUntilSuccess([&] {
        const bool succeeded = resolver.GetFileLinks(Wide(file), &links, &count, &host);
        allocationsLeft = -1;
        EXPECT_EQ(succeeded, links != nullptr);
        return succeeded;
    });
    EXPECT_GT(failures, 3);
    EXPECT_EQ(count, 1);
    // Where memory is back, the reason is logged.
    EXPECT_EQ(host.errors, GetParam() == Shortage::Once ? failures : 0);
    delete[] links;
}

TEST_P(MemoryEnds, WhileLinksAreRewrittenAndTheFileIsTheOldOrTheNewOne)
{
    const SyncPlugin::FileLinkInfo link =
        Record(LinkTo(u"the only link of the file", u"textures of the same name/new.png"));
    const int failures = FailuresUntilSuccess([&] {
        const bool succeeded = resolver.RepathFileLinks(Wide(file), &link, 1, &host);
        allocationsLeft = -1;
        EXPECT_EQ(tree.Read(m_name), succeeded ? "textures of the same name/new.png" : Old);
        EXPECT_EQ(tree.Contents().size(), 1) << "a temporary file stays";
        return succeeded;
    });
    EXPECT_GT(failures, 3);
    EXPECT_EQ(host.errors, GetParam() == Shortage::Once ? failures : 0);
}

TEST(Factories, GiveNullForWhatCannotBeMade)
{
    ResolverFactory<NeverMade> never;
    EXPECT_EQ(never.CreateFileLinkResolver(), nullptr);
    ResolverFactory<DocumentResolverFor<OnePath>> factory;
    shortage = Shortage::Once;
    allocationsLeft = 0;
    EXPECT_EQ(factory.CreateFileLinkResolver(), nullptr);
    delete factory.CreateFileLinkResolver();
}

} // namespace Halvern::Test
