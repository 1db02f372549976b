// SPDX-License-Identifier: Apache-2.0

#include "PluginsFixture.h"

#include "fileset/FileMappingRef.h"

#include <gtest/gtest.h>

namespace {

using namespace Halvern::FileLink;
using namespace Halvern::Test;
using namespace Qt::StringLiterals;
using Pointer = FileMappingRef::Pointer;
using Halvern::SyncServices::FileMapping;

class PluginLayouts : public PluginsFixture
{
protected:
    static Pointer Node(const QString& source, const QString& target = {})
    {
        return std::make_shared<FileMappingRef>(QString(), QString(),
                                                std::make_shared<FileMapping>(source, target, 1));
    }
    /// A node for D:/p/<source> without a target, added to a parent.
    static Pointer Child(const Pointer& parent, const char* source)
    {
        const Pointer child = Node(u"D:/p/"_s + QString::fromUtf8(source));
        parent->AddChild(child);
        return child;
    }
    void Layout(const QString& module) { RegisterLayout(module, u"tasm"_s); }
    bool Assign(const Pointer& mapping) { return manager.AssignTargetPaths(mapping, &context); }
    /// The module's lines about layouts.
    QStringList Lines(const char* level)
    {
        return log.Lines(u"CorsyncFileLink"_s).filter(QString::fromLatin1(level)).filter(Source);
    }

    const QString Source = u"D:/p/a.tasm"_s;
    Pointer root = Node(Source, u"F:/t/a.tasm"_s);
    FileLayoutContext context;
};

TEST_F(PluginLayouts, ALayoutSetsTheTargetsOfLinkedFiles)
{
    Layout(TestLayoutModule());
    const Pointer child = Child(root, "lib/b.tlk");
    const Pointer grandChild = Child(child, "c.tlk");
    EXPECT_TRUE(Assign(root));
    EXPECT_EQ(child->TargetFile(), u"F:/t/layout/b.tlk"_s);
    EXPECT_EQ(grandChild->TargetFile(), u"F:/t/layout/c.tlk"_s);
    EXPECT_EQ(calls.Calls(), QStringList{u"AssignTargetPaths "_s + Source});
    const QString line = u"DEBUG Plugin %1 assigned target paths successfully for file %2"_s.arg(
        TestLayoutModule(), Source);
    EXPECT_TRUE(log.Has(line));
    for (const LogRecord& record : log.Records())
        if (line.endsWith(record.text)) {
            EXPECT_EQ(record.file, u"PluginManager.cpp"_s);
            EXPECT_TRUE(record.function.contains(u"PluginManager::AssignTargetPaths("_s));
        }
}

TEST_F(PluginLayouts, ANullMappingFails)
{
    EXPECT_FALSE(Assign(nullptr));
    EXPECT_EQ(log.Lines(), QStringList());
}

TEST_F(PluginLayouts, WithoutALayoutNothingIsAssignedAndThatIsNoFailure)
{
    const Pointer child = Child(root, "b.tlk");
    EXPECT_TRUE(Assign(root));
    EXPECT_FALSE(child->HasTargetFile());
    EXPECT_FALSE(log.Has(u"TRACE Source and target path mappings:"_s));
}

TEST_F(PluginLayouts, EveryLayoutIsAskedInOrderEvenAfterOneSucceeded)
{
    const QString second = ZooModule(u"WellBehaved"_s);
    Layout(TestLayoutModule());
    Layout(second);
    EXPECT_TRUE(Assign(root));
    EXPECT_EQ(calls.Calls().filter(u"AssignTargetPaths"_s),
              (QStringList{u"AssignTargetPaths "_s + Source, u"AssignTargetPaths"_s}));
    EXPECT_EQ(Lines("DEBUG"),
              (QStringList{u"DEBUG Plugin %1 assigned target paths successfully for file %2"_s.arg(
                               TestLayoutModule(), Source),
                           u"DEBUG Plugin %1 assigned target paths successfully for file %2"_s.arg(
                               second, Source)}));
}

TEST_F(PluginLayouts, OneLayoutThatSucceedsIsEnough)
{
    const QString failing = ZooModule(u"CallReturnsFalse"_s);
    Layout(u"nowhere.so"_s);
    Layout(failing);
    Layout(TestLayoutModule());
    EXPECT_TRUE(Assign(root));
    EXPECT_EQ(Lines("INFO"),
              QStringList{u"INFO Plugin %1 returned false in AssignTargetPaths for file %2"_s.arg(
                  failing, Source)});
    EXPECT_EQ(Lines("ERROR"), QStringList());
}

TEST_F(PluginLayouts, WhenEveryLayoutFailsTheResultIsAFailure)
{
    Layout(ZooModule(u"CallReturnsFalse"_s));
    Layout(ZooModule(u"NullObject"_s));
    EXPECT_FALSE(Assign(root));
    EXPECT_EQ(Lines("ERROR"),
              QStringList{u"ERROR Failed to assign target paths for file %1"_s.arg(Source)});
    EXPECT_FALSE(log.Has(u"TRACE Source and target path mappings:"_s));
}

TEST_F(PluginLayouts, AnExceptionBecomesAFailureThatNamesTheModule)
{
    const QString module = ZooModule(u"CallThrows"_s);
    Layout(module);
    EXPECT_FALSE(Assign(root));
    const QStringList lines = log.Lines(u"CorsyncFileLink"_s);
    EXPECT_EQ(lines.mid(lines.size() - 3),
              (QStringList{u"ERROR Plugin %1 threw an exception in AssignTargetPaths: "
                           "a fault of the zoo"_s.arg(module),
                           u"INFO Plugin %1 returned false in AssignTargetPaths for file %2"_s.arg(
                               module, Source),
                           u"ERROR Failed to assign target paths for file %1"_s.arg(Source)}));
}

TEST_F(PluginLayouts, ALayoutsMessagesGoToItsOwnLogger)
{
    Layout(TestLayoutModule());
    EXPECT_FALSE(Assign(Node(u"D:/p/layoutfails.tasm"_s)));
    EXPECT_EQ(log.Lines(u"SyncPlugin"_s), QStringList{u"WARN test layout: told to fail"_s});
}

TEST_F(PluginLayouts, SuccessDumpsTheTreeChildrenFirstThenWhatTheyLink)
{
    Layout(TestLayoutModule());
    const Pointer b = Child(root, "b.tlk");
    Child(root, "leave.tlk");
    const Pointer d = Child(b, "d.tlk");
    Child(b, "e.tlk");
    Child(d, "f.tlk");
    EXPECT_TRUE(Assign(root));
    const QStringList lines = log.Lines(u"CorsyncFileLink"_s);
    EXPECT_EQ(lines.filter(u"TRACE"_s),
              (QStringList{u"TRACE Source and target path mappings:"_s,
                           u"TRACE \"D:/p/a.tasm\" ==> \"F:/t/a.tasm\""_s,
                           u"TRACE \"D:/p/b.tlk\" ==> \"F:/t/layout/b.tlk\""_s,
                           u"TRACE \"D:/p/leave.tlk\" ==> \"\""_s,
                           u"TRACE \"D:/p/d.tlk\" ==> \"F:/t/layout/d.tlk\""_s,
                           u"TRACE \"D:/p/e.tlk\" ==> \"F:/t/layout/e.tlk\""_s,
                           u"TRACE \"D:/p/f.tlk\" ==> \"F:/t/layout/f.tlk\""_s}));
    EXPECT_TRUE(log.Records().last().function.contains(u"PluginManager::DumpFileMapping("_s));
}

TEST_F(PluginLayouts, WithoutTraceNothingIsDumped)
{
    log.SetLevel(u"CorsyncFileLink"_s, log4cplus::DEBUG_LOG_LEVEL);
    manager.DumpFileMapping(root.get());
    EXPECT_EQ(log.Lines(), QStringList());
}

TEST_F(PluginLayouts, ADumpOfAHundredThousandLinesIsComplete)
{
    for (int i = 0; i < 99'999; ++i)
        Child(root, "b.tlk");
    manager.DumpFileMapping(root.get());
    EXPECT_EQ(log.Records().size(), 100'001);
    EXPECT_EQ(log.Lines().last(), u"TRACE \"D:/p/b.tlk\" ==> \"\""_s);
}

TEST_F(PluginLayouts, ADumpOfASharedTreeStopsAfterAHundredThousandLines)
{
    // Each level links the next one twice: 2^40 nodes.
    Pointer bottom = Node(u"D:/p/40.tlk"_s);
    for (int level = 39; level >= 0; --level) {
        const Pointer above = Node(u"D:/p/%1.tlk"_s.arg(level));
        above->AddChild(bottom);
        above->AddChild(bottom);
        bottom = above;
    }
    manager.DumpFileMapping(bottom.get());
    ASSERT_EQ(log.Records().size(), 100'002);
    EXPECT_EQ(log.Lines().last(), u"TRACE Stopped after 100000 lines: there are more mappings"_s);
}

TEST_F(PluginLayouts, AChainOfFiftyThousandLinksIsDumpedWithoutRecursion)
{
    std::vector<Pointer> chain;
    for (int i = 0; i < 50'000; ++i)
        chain.push_back(Node(u"D:/p/%1.tlk"_s.arg(i)));
    for (size_t i = 0; i + 1 < chain.size(); ++i)
        chain[i]->AddChild(chain[i + 1]);
    manager.DumpFileMapping(chain.front().get());
    EXPECT_EQ(log.Records().size(), 50'001);
}

} // namespace
