// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "FormatFixture.h"

#include "pluginkit/Compression.h"
#include "scenes/SceneResolver.h"

namespace Halvern::Test {

using namespace Qt::StringLiterals;

/// The resolver of scenes, and files of its formats around a few lines.
class ScenesFixture : public ResolverFixture
{
protected:
    ScenesFixture() : ResolverFixture(m_resolver) {}

    static QByteArray Collada(const QByteArray& elements)
    {
        return "<?xml version=\"1.0\" encoding=\"utf-8\"?>\n"
               "<COLLADA xmlns=\"http://www.collada.org/2005/11/COLLADASchema\""
               " version=\"1.4.1\">\n" +
               elements + "\n</COLLADA>\n";
    }
    static QByteArray X3d(const QByteArray& elements)
    {
        return "<?xml version='1.0'?>\n<X3D version='3.3'><Scene>\n" + elements +
               "\n</Scene></X3D>\n";
    }
    static QByteArray Vrml(const QByteArray& nodes) { return "#VRML V2.0 utf8\n" + nodes + "\n"; }
    static QByteArray OldVrml(const QByteArray& nodes)
    {
        return "#VRML V1.0 ascii\n" + nodes + "\n";
    }
    static QByteArray MaterialX(const QByteArray& elements)
    {
        return "<?xml version=\"1.0\"?>\n<materialx version=\"1.38\">\n" + elements +
               "\n</materialx>\n";
    }
    static QByteArray Packed(const QByteArray& text)
    {
        return QByteArray::fromStdString(
            PluginKit::Compressed(PluginKit::Compression::Gzip, text.toStdString()));
    }
    Links LinksOf(const QString& file, const QByteArray& content)
    {
        tree.File(file, content);
        return Read(file);
    }
    std::string Failure(const QString& file, const QByteArray& content)
    {
        return ReadFailure(file, content).toStdString();
    }

private:
    Formats::Scenes::SceneResolver m_resolver;
};

inline Link L(const char16_t* id, const char16_t* path)
{
    return {QString::fromUtf16(id), QString::fromUtf16(path)};
}

} // namespace Halvern::Test
