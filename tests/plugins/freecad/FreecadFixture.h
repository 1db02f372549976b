// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "FormatFixture.h"
#include "ZipBuilder.h"

#include "freecad/FreecadResolver.h"

namespace Halvern::Test {

using namespace Qt::StringLiterals;

/// The resolver of FreeCAD documents, and documents as FreeCAD packs them.
class FreecadFixture : public ResolverFixture
{
protected:
    FreecadFixture() : ResolverFixture(m_resolver) {}

    /// A property with these elements inside.
    static QByteArray Property(const QByteArray& name, const QByteArray& type,
                               const QByteArray& inside)
    {
        return "<Property name=\"" + name + "\" type=\"App::Property" + type +
               "\" status=\"1\">\n" + inside + "</Property>\n";
    }
    /// Document.xml with one object of this type that has these properties.
    static QByteArray Document(const QByteArray& properties, const QByteArray& type = "App::Link")
    {
        return "<?xml version='1.0' encoding='utf-8'?>\n<Document SchemaVersion=\"4\">\n"
               "<Properties Count=\"1\">\n" +
               Property("Label", "String", "<String value=\"top.FCStd\"/>") +
               "</Properties>\n<Objects Count=\"1\">\n<ObjectDeps Name=\"Part\" Count=\"0\"/>\n"
               "<Object type=\"" +
               type +
               "\" name=\"Part\" id=\"1\" />\n</Objects>\n<ObjectData Count=\"1\">\n"
               "<Object name=\"Part\" Extensions=\"True\">\n<Properties Count=\"1\">\n" +
               properties + "</Properties>\n</Object>\n</ObjectData>\n</Document>\n";
    }
    static QByteArray XLink(const QByteArray& file, const QByteArray& name = "Box")
    {
        return "<XLink file=\"" + file + "\" stamp=\"2026-01-01T00:00:00Z\" name=\"" + name +
               "\"/>\n";
    }
    /// The archive around it, with a shape and a comment.
    static QByteArray Packed(const QByteArray& documentXml, const QByteArray& guiXml = {})
    {
        QList<ZipMember> members = {{"Document.xml", documentXml},
                                    {"PartShape.brp", PatternBytes(3000)}};
        if (!guiXml.isEmpty())
            members.append({"GuiDocument.xml", guiXml});
        members.append({"thumbnails/Thumbnail.png", PatternBytes(500, 2)});
        return Zip(members, "FreeCAD Document");
    }

    Links LinksOf(const QByteArray& documentXml, const QByteArray& guiXml = {})
    {
        tree.File(m_file, Packed(documentXml, guiXml));
        return Read(m_file);
    }

    const QString m_file = u"Baugruppe/top.FCStd"_s;

private:
    Formats::Freecad::FreecadResolver m_resolver;
};

inline Link L(const char16_t* id, const char16_t* path)
{
    return {QString::fromUtf16(id), QString::fromUtf16(path)};
}

} // namespace Halvern::Test
