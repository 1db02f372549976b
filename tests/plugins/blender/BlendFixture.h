// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "BlendFile.h"
#include "FormatFixture.h"

#include "blender/BlendResolver.h"

#include <filesystem>

namespace Halvern::Test {

using namespace Qt::StringLiterals;

/// A resolver of .blend files and the file "Szene/a.blend" that most tests work on.
class BlendFixture : public ResolverFixture
{
protected:
    BlendFixture() : ResolverFixture(m_resolver) {}

    /// The links of a file of this content.
    Links LinksOf(const QByteArray& content)
    {
        tree.File(file, content);
        return Read(file);
    }
    Links LinksOf(const BlendFile& content) { return LinksOf(content.Bytes()); }

    /// The file after its links got new paths.
    QByteArray Rewritten(const QByteArray& content, const Links& links)
    {
        tree.File(file, content);
        EXPECT_TRUE(Repath(file, links)) << context.lines.join(u'\n').toStdString();
        return tree.Read(file);
    }
    /// What a rewrite that must fail logs after "<file>: ".
    std::string RewriteFailure(const QByteArray& content, const Links& links)
    {
        tree.File(file, content);
        context.lines.clear();
        EXPECT_FALSE(Repath(file, links));
        EXPECT_TRUE(tree.Read(file) == content);
        const QString start = u"ERROR Failed to rewrite the file links of %1: "_s;
        return context.lines.join(u'\n')
            .replace(start.arg(tree.Path(file)), QString())
            .toStdString();
    }

    const QString file = u"Szene/a.blend"_s;

private:
    Formats::Blender::BlendResolver m_resolver;
};

inline Link L(const char16_t* id, const char16_t* path)
{
    return {QString::fromUtf16(id), QString::fromUtf16(path)};
}

} // namespace Halvern::Test
