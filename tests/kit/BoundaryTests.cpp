// SPDX-License-Identifier: Apache-2.0

#include "FormatFixture.h"

#include "pluginkit/Boundary.h"
#include "pluginkit/FormatError.h"
#include "pluginkit/LinkArray.h"
#include "pluginkit/Utf.h"

#include <algorithm>
#include <functional>
#include <new>
#include <stdexcept>

namespace Halvern::Test {

using namespace PluginKit;
using namespace Qt::StringLiterals;

namespace {

class Boundary : public ::testing::Test
{
protected:
    bool Run(const std::function<void()>& work)
    {
        const QString file = u"D:/Höhe.gltf"_s;
        return RunGuarded(&context, "read", Wide(file), work);
    }

    RecordingContext context;
};

/// A mapping that knows its source and nothing else.
class SourceAlone : public SyncPlugin::IFileMapping
{
public:
    using WideChar = SyncPlugin::WideChar;

    unsigned GetSourceFile(WideChar* buffer, int size) override
    {
        const WideString source = ToUtf16("D:/Höhe.asm").value();
        if (!buffer)
            return static_cast<unsigned>(source.size());
        const std::size_t part = std::min(source.size(), static_cast<std::size_t>(size) - 1);
        *std::copy_n(source.begin(), part, buffer) = 0;
        return static_cast<unsigned>(part);
    }
    unsigned GetRefId(WideChar*, int) override { return 0; }
    unsigned GetTargetFile(WideChar*, int) override { return 0; }
    unsigned GetTargetPath(WideChar*, int) override { return 0; }
    bool SetTargetFile(const WideChar*, bool) override { return false; }
    unsigned ResolveTargetPath(const WideChar*, WideChar*, int) override { return 0; }
    bool HasTargetFile() override { return false; }
    bool ExistsInTarget() override { return false; }
    unsigned GetTargetRootFolder(WideChar*, int) override { return 0; }
    bool HasFlag(unsigned) override { return false; }
    unsigned GetFlag() override { return 0; }
    void SetFlag(unsigned, bool) override {}
    SyncPlugin::IFileMappingIterator* GetChildren() override { return nullptr; }
    IFileMapping* GetParent() override { return nullptr; }
    IFileMapping* GetRoot() override { return this; }
    bool ChangeSourceFile(const WideChar*) override { return false; }
};

class LayoutContext : public SyncPlugin::IFileLayoutContext
{
public:
    explicit LayoutContext(SyncPlugin::IPluginLogger* logger) : m_logger(logger) {}
    SyncPlugin::IPluginLogger* GetLogger() override
    {
        return m_logger ? m_logger : throw std::runtime_error("no logger today");
    }

private:
    SyncPlugin::IPluginLogger* m_logger;
};

void FailPlainly()
{
    throw FormatError("no such chunk");
}

/// The text of the FormatError that adding this link throws.
std::string Refusal(const std::string& id, std::string_view path)
{
    try {
        LinkArray(1).Add(id, path);
    } catch (const FormatError& error) {
        return error.what();
    }
    return "accepted";
}

} // namespace

TEST_F(Boundary, WorkThatEndsWellLogsNothing)
{
    bool done = false;
    EXPECT_TRUE(Run([&] { done = true; }));
    EXPECT_TRUE(done);
    EXPECT_TRUE(context.lines.isEmpty());
}

TEST_F(Boundary, WorkIsAnythingThatIsCalledWithoutArguments)
{
    const QString file = u"D:/Höhe.gltf"_s;
    const auto run = [&](PluginKit::Work work) {
        return RunGuarded(&context, "read", Wide(file), work);
    };
    int count = 0;
    auto counting = [count]() mutable { return ++count; };
    EXPECT_TRUE(run(counting));
    EXPECT_EQ(counting(), 2) << "a copy was called";
    EXPECT_TRUE(run([count]() mutable { ++count; }));
    const std::function<void()> constant = [&] { ++count; };
    EXPECT_TRUE(run(constant));
    EXPECT_EQ(count, 1);
    EXPECT_FALSE(run(FailPlainly));
    EXPECT_FALSE(run(&FailPlainly));
    EXPECT_EQ(context.lines.size(), 2);
}

TEST_F(Boundary, AFailureIsLoggedWithFilePositionAndReason)
{
    EXPECT_FALSE(Run([] { throw FormatError("no such chunk", 17); }));
    EXPECT_FALSE(Run([] { throw FormatError("not a regular file"); }));
    EXPECT_EQ(context.lines,
              (QStringList{u"ERROR Failed to read D:/Höhe.gltf: no such chunk (byte 17)"_s,
                           u"ERROR Failed to read D:/Höhe.gltf: not a regular file"_s}));
}

TEST_F(Boundary, NoExceptionOfAnyKindGetsOut)
{
    EXPECT_FALSE(Run([] { throw std::bad_alloc(); }));
    EXPECT_FALSE(Run([] { throw std::out_of_range("index"); }));
    EXPECT_FALSE(Run([] { throw 42; }));
    EXPECT_EQ(context.lines, (QStringList{u"ERROR Failed to read D:/Höhe.gltf: out of memory"_s,
                                          u"ERROR Failed to read D:/Höhe.gltf: index"_s,
                                          u"ERROR Failed to read D:/Höhe.gltf: unknown error"_s}));
}

TEST_F(Boundary, AHostWithoutContextOrFileStillGetsItsAnswer)
{
    const SyncPlugin::WideChar* file = nullptr;
    SyncPlugin::IFileLinkResolverContext* noContext = nullptr;
    EXPECT_FALSE(RunGuarded(noContext, "read", file, [] { throw FormatError("x"); }));
    EXPECT_FALSE(RunGuarded(&context, "read", file, [] { throw FormatError("x"); }));
    EXPECT_EQ(context.lines, QStringList{u"ERROR Failed to read : x"_s});
}

TEST_F(Boundary, ALayoutFailsWithTheSourceOfItsFile)
{
    SourceAlone mapping;
    SyncPlugin::IFileMapping* noMapping = nullptr;
    LayoutContext layout(&context);
    const auto fail = [] { throw FormatError("no room", 3); };
    EXPECT_TRUE(RunGuarded(&layout, "lay out", &mapping, [] {}));
    EXPECT_FALSE(RunGuarded(&layout, "lay out", &mapping, fail));
    EXPECT_FALSE(RunGuarded(&layout, "lay out", noMapping, fail));
    EXPECT_EQ(context.lines,
              (QStringList{u"ERROR Failed to lay out D:/Höhe.asm: no room (byte 3)"_s,
                           u"ERROR Failed to lay out : no room (byte 3)"_s}));
}

TEST_F(Boundary, AHostWhoseLoggerThrowsStillGetsItsAnswer)
{
    SourceAlone mapping;
    LayoutContext layout(nullptr);
    EXPECT_TRUE(RunGuarded(&layout, "lay out", &mapping, [] {}));
    EXPECT_FALSE(RunGuarded(&layout, "lay out", &mapping, [] { throw FormatError("no room"); }));
}

TEST(LinkArray, HandsOverRecordsInOrder)
{
    LinkArray array(2);
    array.Add("/a/uri", "Höhe.png");
    array.Add("/b/uri", "b.png");
    SyncPlugin::FileLinkInfo* links = nullptr;
    int count = 0;
    array.HandOver(&links, &count);
    ASSERT_EQ(count, 2);
    EXPECT_EQ(links[0].size, 1044U);
    EXPECT_EQ(FromWide(links[0].referenceId), u"/a/uri"_s);
    EXPECT_EQ(FromWide(links[0].path), u"Höhe.png"_s);
    EXPECT_EQ(FromWide(links[1].path), u"b.png"_s);
    delete[] links;
}

TEST(LinkArray, WithoutLinksTheArrayIsNull)
{
    LinkArray array(0);
    auto* links = reinterpret_cast<SyncPlugin::FileLinkInfo*>(&array);
    int count = -1;
    array.HandOver(&links, &count);
    EXPECT_EQ(links, nullptr);
    EXPECT_EQ(count, 0);
}

TEST(LinkArray, TwoHundredAndFiftyNineUnitsFitAndOneMoreIsRefusedByName)
{
    const std::string fits(259, 'x');
    EXPECT_EQ(Refusal("/a", fits), "accepted");
    EXPECT_EQ(Refusal("/a", fits + "x"),
              "the path of link /a has 260 characters; a link can have 259");
    EXPECT_EQ(Refusal(fits + "x", "p"),
              "the id of link " + fits + "x has 260 characters; a link can have 259");
}

TEST(LinkArray, CharactersOutsideTheBasicPlaneCountTwice)
{
    std::string trees;
    for (int i = 0; i < 130; ++i)
        trees += "\xF0\x9F\x8C\xB2";
    EXPECT_EQ(Refusal("/a", trees), "the path of link /a has 260 characters; a link can have 259");
    EXPECT_EQ(Refusal("/a", std::string_view(trees).substr(4)), "accepted");
}

TEST(LinkArray, TextThatNoRecordCanHoldIsRefused)
{
    EXPECT_EQ(Refusal("/a", std::string_view("a\0b", 3)),
              "the path of link /a holds a NUL character");
    EXPECT_EQ(Refusal("/a", "\xFF"), "the path of link /a is no valid text");
}

TEST(LinkArray, ARecordWhoseTextFillsTheFieldIsReadToItsEndOnly)
{
    SyncPlugin::FileLinkInfo link = {};
    std::fill(std::begin(link.referenceId), std::end(link.referenceId), SyncPlugin::WideChar('x'));
    EXPECT_EQ(LinkText(link.referenceId), std::string(260, 'x'));
    EXPECT_EQ(LinkText(link.path), std::string());
}

} // namespace Halvern::Test
