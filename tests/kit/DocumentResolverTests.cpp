// SPDX-License-Identifier: Apache-2.0

// What DocumentResolver adds to a format's reader and rewriter.

#include "FormatFixture.h"

#include "pluginkit/DocumentResolver.h"
#include "pluginkit/FileEdits.h"

namespace Halvern::Test {

namespace {

using namespace PluginKit;
using namespace Qt::StringLiterals;

/// A file that is one path. Its link is called "shown" where that path has a dot, else "hidden",
/// and then it is known only to those who ask for it.
class OnePath : public Document
{
public:
    explicit OnePath(const std::filesystem::path& path) : m_file(path) {}

    std::vector<DocumentLink> Links() const override
    {
        if (IsHidden())
            return {};
        return {{"shown", Text()}};
    }
    std::optional<std::string> UnlistedPathOf(const std::string& id) const override
    {
        return id == "hidden" && IsHidden() ? std::optional(Text()) : std::nullopt;
    }
    void Rewrite(const NewPaths& paths) override
    {
        ReplaceSpans(m_file, {{0, m_file.Size(), paths.begin()->second}});
    }

private:
    std::string Text() const { return m_file.Read(0, m_file.Size()); }
    bool IsHidden() const { return Text().find('.') == std::string::npos; }

    InputFile m_file;
};

class LinksOfDocuments : public ResolverFixture
{
protected:
    LinksOfDocuments() : ResolverFixture(m_resolver) {}

    bool Rewrite(const char16_t* id, const char16_t* path)
    {
        context.lines.clear();
        return Repath(m_name, {{QString::fromUtf16(id), QString::fromUtf16(path)}});
    }

    const QString m_name = u"a.one"_s;

private:
    DocumentResolver m_resolver{[](const std::filesystem::path& file) -> std::unique_ptr<Document> {
        return std::make_unique<OnePath>(file);
    }};
};

} // namespace

TEST_F(LinksOfDocuments, ALinkThatIsNotShownCanBeRewritten)
{
    tree.File(m_name, "old");
    EXPECT_EQ(Read(m_name), Links{});
    EXPECT_TRUE(Rewrite(u"hidden", u"new"));
    EXPECT_EQ(tree.Read(m_name), "new");
}

TEST_F(LinksOfDocuments, ALinkThatIsNotShownAndHasItsPathAlreadyLeavesTheFileAlone)
{
    const QDateTime time = QDateTime::fromSecsSinceEpoch(1'000'000'000);
    tree.File(m_name, "same").Touch(m_name, time);
    EXPECT_TRUE(Rewrite(u"hidden", u"./same"));
    EXPECT_EQ(tree.Modified(m_name), time);
}

TEST_F(LinksOfDocuments, ALinkThatIsNeitherShownNorHiddenIsAFailure)
{
    for (const char* content : {"old", "old.x"}) {
        tree.File(m_name, content);
        EXPECT_FALSE(Rewrite(u"other", u"new"));
        EXPECT_EQ(context.lines.value(0).section(u": "_s, -1), u"the file has no link other"_s);
        EXPECT_EQ(tree.Read(m_name), content);
    }
    EXPECT_FALSE(Rewrite(u"hidden", u"new")); // the path has a dot now
}

} // namespace Halvern::Test
