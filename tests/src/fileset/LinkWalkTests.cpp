// SPDX-License-Identifier: Apache-2.0

#include "Mappings.h"
#include "fileset/LinkGraph.h"
#include "fileset/LinkWalk.h"

#include <gtest/gtest.h>

namespace {

using namespace Halvern::FileLink;
using namespace Halvern::Test;
using namespace Qt::StringLiterals;

class LinkWalks : public ::testing::Test
{
protected:
    void Add(const QString& name, const QStringList& links = {})
    {
        AddTo(set, u"D:/w/"_s + name, links,
              set.IsEmpty() ? FileMapping::Selected : FileMapping::NoFlag);
    }
    FileMappingRef::Pointer Root() { return Imp(set).GetFileLinkHierarchy(true).first(); }
    static QString NameOf(const FileMappingRef& node) { return node.SourceFile().mid(5); }
    /// "a1 b2 c3": the names with the number of open nodes, in the order of the walk. One that
    /// closes a cycle has an exclamation mark.
    static QString Walked(const FileMappingRef::Pointer& root)
    {
        QStringList names;
        LinkWalk walk;
        LinkWalk::NodePointer node = root;
        walk.Enter(root);
        names.append(NameOf(*root) + u"1"_s);
        while (walk.IsOpen()) {
            node = walk.NextChild();
            if (!node) {
                walk.Leave();
                continue;
            }
            EXPECT_EQ(node->Parent(), &walk.Node());
            walk.Enter(node);
            names.append(NameOf(*node) + QString::number(walk.Depth()) +
                         (node->ClosesCycle() ? u"!"_s : QString()));
        }
        return names.join(u' ');
    }

    FileSet set;
};

TEST_F(LinkWalks, GoDownTheFirstLinkBeforeTheSecond)
{
    Add(u"a"_s, {u"b"_s, u"c"_s});
    Add(u"b"_s, {u"d"_s});
    Add(u"c"_s, {u"d"_s, u"b"_s});
    Add(u"d"_s);
    EXPECT_EQ(Walked(Root()), u"a1 b2 d3 c2 d3 b3 d4"_s);
}

TEST_F(LinkWalks, SeeWhereACycleClosesAndNothingBelow)
{
    Add(u"a"_s, {u"b"_s, u"a"_s});
    Add(u"b"_s, {u"a"_s, u"c"_s});
    Add(u"c"_s, {u"b"_s});
    EXPECT_EQ(Walked(Root()), u"a1 b2 a3! c3 b4! a2!"_s);
}

TEST_F(LinkWalks, FindTheSameTreeASecondTime)
{
    Add(u"a"_s, {u"b"_s, u"c"_s});
    Add(u"b"_s, {u"c"_s});
    Add(u"c"_s, {u"b"_s});
    const FileMappingRef::Pointer root = Root();
    const QString first = Walked(root);
    EXPECT_EQ(first, u"a1 b2 c3 b4! c2 b3 c4!"_s);
    EXPECT_EQ(Walked(root), first);
}

TEST_F(LinkWalks, FreeTheNodesThatTheyLeave)
{
    Add(u"a"_s, {u"b"_s});
    Add(u"b"_s, {u"c"_s});
    Add(u"c"_s);
    const FileMappingRef::Pointer root = Root();
    LinkWalk walk;
    walk.Enter(root);
    std::weak_ptr<FileMappingRef> b = walk.NextChild();
    walk.Enter(b.lock());
    const std::weak_ptr<FileMappingRef> c = walk.NextChild();
    EXPECT_FALSE(c.expired());
    walk.Leave();
    EXPECT_TRUE(c.expired());
    EXPECT_FALSE(b.expired());
    EXPECT_EQ(walk.NextChild(), nullptr);
    walk.Leave();
    EXPECT_TRUE(b.expired());
    EXPECT_FALSE(walk.IsOpen());
}

TEST_F(LinkWalks, LeaveNodesThatWereAddedByHand)
{
    const auto root = std::make_shared<FileMappingRef>(QString(), QString(), MakeFile(u"D:/w/a"_s));
    root->AddChild(std::make_shared<FileMappingRef>(u"b"_s, u"1"_s, MakeFile(u"D:/w/b"_s)));
    root->AddChild(std::make_shared<FileMappingRef>(u"c"_s, u"2"_s, MakeFile(u"D:/w/c"_s)));
    EXPECT_EQ(Walked(root), u"a1 b2 c2"_s);
    EXPECT_EQ(root->Children().size(), 2);
}

TEST_F(LinkWalks, OfATreeThatWasAddedToAnotherKnowTheNewRoot)
{
    const auto node = [](const QString& name) {
        return std::make_shared<FileMappingRef>(name, QString(), MakeFile(u"D:/w/"_s + name));
    };
    const FileMappingRef::Pointer top = node(u"top"_s);
    const FileMappingRef::Pointer middle = node(u"middle"_s);
    const FileMappingRef::Pointer leaf = node(u"leaf"_s);
    middle->AddChild(leaf);
    EXPECT_EQ(leaf->Root(), middle.get());
    top->AddChild(middle);
    EXPECT_EQ(leaf->Root(), top.get());
}

} // namespace
