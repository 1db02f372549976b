// SPDX-License-Identifier: Apache-2.0

// The order in which a tree of mappings is dumped: all children of a node, then each child's own.

#include "PluginsFixture.h"

#include "fileset/FileMappingRef.h"

#include <gtest/gtest.h>

namespace {

using namespace Halvern::FileLink;
using namespace Halvern::Test;
using namespace Qt::StringLiterals;
using Pointer = FileMappingRef::Pointer;
using Halvern::SyncServices::FileMapping;

class MappingDump : public PluginsFixture
{
protected:
    static Pointer Node(const char* source)
    {
        return std::make_shared<FileMappingRef>(
            QString(), QString(),
            std::make_shared<FileMapping>(u"D:/%1"_s.arg(QString::fromLatin1(source)), QString(),
                                          1));
    }
    static Pointer Child(const Pointer& parent, const char* source)
    {
        const Pointer child = Node(source);
        parent->AddChild(child);
        return child;
    }
    /// The names of the dumped files in their order.
    QString Dump(const Pointer& root)
    {
        manager.DumpFileMapping(root.get());
        QString names;
        for (const QString& line : log.Lines().mid(1))
            names += line.section(u'/', 1, 1).section(u'"', 0, 0) + u' ';
        return names.trimmed();
    }
};

TEST_F(MappingDump, FollowsTheFirstChildBeforeTheSecond)
{
    const Pointer root = Node("root");
    const Pointer first = Child(root, "first");
    const Pointer second = Child(root, "second");
    Child(first, "1a");
    Child(first, "1b");
    Child(Child(second, "2a"), "2a1");
    Child(second, "2b");
    EXPECT_EQ(Dump(root), u"root first second 1a 1b 2a 2b 2a1"_s);
}

TEST_F(MappingDump, FinishesWhatLiesBelowOneChildBeforeTheNext)
{
    const Pointer root = Node("root");
    const Pointer first = Child(root, "first");
    const Pointer second = Child(root, "second");
    Child(Child(Child(first, "1a"), "1a1"), "1a11");
    Child(second, "2a");
    EXPECT_EQ(Dump(root), u"root first second 1a 1a1 1a11 2a"_s);
}

TEST_F(MappingDump, OfANodeWithoutAMappingHasEmptyPaths)
{
    FileMappingRef node(QString(), QString(), nullptr);
    manager.DumpFileMapping(&node);
    EXPECT_EQ(log.Lines(),
              (QStringList{u"TRACE Source and target path mappings:"_s, u"TRACE \"\" ==> \"\""_s}));
}

} // namespace
