// SPDX-License-Identifier: Apache-2.0

#include "PluginsFixture.h"

#include "fileset/FileMappingRef.h"

#include <gtest/gtest.h>

namespace {

using namespace Halvern::FileLink;
using namespace Halvern::Test;
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
        const Pointer child = Node(QStringLiteral("D:/p/") + QString::fromUtf8(source));
        parent->AddChild(child);
        return child;
    }
    void Layout(const QString& module) { RegisterLayout(module, QStringLiteral("tasm")); }
    bool Assign(const Pointer& mapping) { return manager.AssignTargetPaths(mapping, &context); }
    /// The module's lines about layouts.
    QStringList Lines(const char* level)
    {
        return log.Lines(QStringLiteral("CorsyncFileLink"))
            .filter(QString::fromLatin1(level))
            .filter(Source);
    }

    const QString Source = QStringLiteral("D:/p/a.tasm");
    Pointer root = Node(Source, QStringLiteral("F:/t/a.tasm"));
    FileLayoutContext context;
};

TEST_F(PluginLayouts, ALayoutSetsTheTargetsOfLinkedFiles)
{
    Layout(TestLayoutModule());
    const Pointer child = Child(root, "lib/b.tlk");
    const Pointer grandChild = Child(child, "c.tlk");
    EXPECT_TRUE(Assign(root));
    EXPECT_EQ(child->TargetFile(), QStringLiteral("F:/t/layout/b.tlk"));
    EXPECT_EQ(grandChild->TargetFile(), QStringLiteral("F:/t/layout/c.tlk"));
    EXPECT_EQ(calls.Calls(), QStringList{QStringLiteral("AssignTargetPaths ") + Source});
    const QString line =
        QStringLiteral("DEBUG Plugin %1 assigned target paths successfully for file %2")
            .arg(TestLayoutModule(), Source);
    EXPECT_TRUE(log.Has(line));
    for (const LogRecord& record : log.Records())
        if (line.endsWith(record.text)) {
            EXPECT_EQ(record.file, QStringLiteral("PluginManager.cpp"));
            EXPECT_TRUE(
                record.function.contains(QStringLiteral("PluginManager::AssignTargetPaths(")));
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
    EXPECT_FALSE(log.Has(QStringLiteral("TRACE Source and target path mappings:")));
}

TEST_F(PluginLayouts, EveryLayoutIsAskedInOrderEvenAfterOneSucceeded)
{
    const QString second = ZooModule(QStringLiteral("WellBehaved"));
    Layout(TestLayoutModule());
    Layout(second);
    EXPECT_TRUE(Assign(root));
    EXPECT_EQ(calls.Calls().filter(QStringLiteral("AssignTargetPaths")),
              (QStringList{QStringLiteral("AssignTargetPaths ") + Source,
                           QStringLiteral("AssignTargetPaths")}));
    EXPECT_EQ(Lines("DEBUG"),
              (QStringList{
                  QStringLiteral("DEBUG Plugin %1 assigned target paths successfully for file %2")
                      .arg(TestLayoutModule(), Source),
                  QStringLiteral("DEBUG Plugin %1 assigned target paths successfully for file %2")
                      .arg(second, Source)}));
}

TEST_F(PluginLayouts, OneLayoutThatSucceedsIsEnough)
{
    const QString failing = ZooModule(QStringLiteral("CallReturnsFalse"));
    Layout(QStringLiteral("nowhere.so"));
    Layout(failing);
    Layout(TestLayoutModule());
    EXPECT_TRUE(Assign(root));
    EXPECT_EQ(
        Lines("INFO"),
        QStringList{QStringLiteral("INFO Plugin %1 returned false in AssignTargetPaths for file %2")
                        .arg(failing, Source)});
    EXPECT_EQ(Lines("ERROR"), QStringList());
}

TEST_F(PluginLayouts, WhenEveryLayoutFailsTheResultIsAFailure)
{
    Layout(ZooModule(QStringLiteral("CallReturnsFalse")));
    Layout(ZooModule(QStringLiteral("NullObject")));
    EXPECT_FALSE(Assign(root));
    EXPECT_EQ(
        Lines("ERROR"),
        QStringList{QStringLiteral("ERROR Failed to assign target paths for file %1").arg(Source)});
    EXPECT_FALSE(log.Has(QStringLiteral("TRACE Source and target path mappings:")));
}

TEST_F(PluginLayouts, AnExceptionBecomesAFailureThatNamesTheModule)
{
    const QString module = ZooModule(QStringLiteral("CallThrows"));
    Layout(module);
    EXPECT_FALSE(Assign(root));
    const QStringList lines = log.Lines(QStringLiteral("CorsyncFileLink"));
    EXPECT_EQ(lines.mid(lines.size() - 3),
              (QStringList{
                  QStringLiteral("ERROR Plugin %1 threw an exception in AssignTargetPaths: "
                                 "a fault of the zoo")
                      .arg(module),
                  QStringLiteral("INFO Plugin %1 returned false in AssignTargetPaths for file %2")
                      .arg(module, Source),
                  QStringLiteral("ERROR Failed to assign target paths for file %1").arg(Source)}));
}

TEST_F(PluginLayouts, ALayoutsMessagesGoToItsOwnLogger)
{
    Layout(TestLayoutModule());
    EXPECT_FALSE(Assign(Node(QStringLiteral("D:/p/layoutfails.tasm"))));
    EXPECT_EQ(log.Lines(QStringLiteral("SyncPlugin")),
              QStringList{QStringLiteral("WARN test layout: told to fail")});
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
    const QStringList lines = log.Lines(QStringLiteral("CorsyncFileLink"));
    EXPECT_EQ(lines.filter(QStringLiteral("TRACE")),
              (QStringList{QStringLiteral("TRACE Source and target path mappings:"),
                           QStringLiteral("TRACE \"D:/p/a.tasm\" ==> \"F:/t/a.tasm\""),
                           QStringLiteral("TRACE \"D:/p/b.tlk\" ==> \"F:/t/layout/b.tlk\""),
                           QStringLiteral("TRACE \"D:/p/leave.tlk\" ==> \"\""),
                           QStringLiteral("TRACE \"D:/p/d.tlk\" ==> \"F:/t/layout/d.tlk\""),
                           QStringLiteral("TRACE \"D:/p/e.tlk\" ==> \"F:/t/layout/e.tlk\""),
                           QStringLiteral("TRACE \"D:/p/f.tlk\" ==> \"F:/t/layout/f.tlk\"")}));
    EXPECT_TRUE(
        log.Records().last().function.contains(QStringLiteral("PluginManager::DumpFileMapping(")));
}

TEST_F(PluginLayouts, WithoutTraceNothingIsDumped)
{
    log.SetLevel(QStringLiteral("CorsyncFileLink"), log4cplus::DEBUG_LOG_LEVEL);
    manager.DumpFileMapping(root.get());
    EXPECT_EQ(log.Lines(), QStringList());
}

TEST_F(PluginLayouts, ADumpOfAHundredThousandLinesIsComplete)
{
    for (int i = 0; i < 99'999; ++i)
        Child(root, "b.tlk");
    manager.DumpFileMapping(root.get());
    EXPECT_EQ(log.Records().size(), 100'001);
    EXPECT_EQ(log.Lines().last(), QStringLiteral("TRACE \"D:/p/b.tlk\" ==> \"\""));
}

TEST_F(PluginLayouts, ADumpOfASharedTreeStopsAfterAHundredThousandLines)
{
    // Each level links the next one twice: 2^40 nodes.
    Pointer bottom = Node(QStringLiteral("D:/p/40.tlk"));
    for (int level = 39; level >= 0; --level) {
        const Pointer above = Node(QStringLiteral("D:/p/%1.tlk").arg(level));
        above->AddChild(bottom);
        above->AddChild(bottom);
        bottom = above;
    }
    manager.DumpFileMapping(bottom.get());
    ASSERT_EQ(log.Records().size(), 100'002);
    EXPECT_EQ(log.Lines().last(),
              QStringLiteral("TRACE Stopped after 100000 lines: there are more mappings"));
}

TEST_F(PluginLayouts, AChainOfFiftyThousandLinksIsDumpedWithoutRecursion)
{
    std::vector<Pointer> chain;
    for (int i = 0; i < 50'000; ++i)
        chain.push_back(Node(QStringLiteral("D:/p/%1.tlk").arg(i)));
    for (size_t i = 0; i + 1 < chain.size(); ++i)
        chain[i]->AddChild(chain[i + 1]);
    manager.DumpFileMapping(chain.front().get());
    EXPECT_EQ(log.Records().size(), 50'001);
}

} // namespace
