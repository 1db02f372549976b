// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "FormatFixture.h"

#include "pluginkit/Compression.h"
#include "scribus/ScribusResolver.h"

namespace Halvern::Test {

using namespace Qt::StringLiterals;

class ScribusFixture : public ResolverFixture
{
protected:
    ScribusFixture() : ResolverFixture(m_resolver) {}

    /// A document with these objects.
    static QByteArray File(const QByteArray& objects)
    {
        return "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<SCRIBUSUTF8NEW Version=\"1.5.8\">\n"
               "<DOCUMENT DPPr=\"Some Profile\" TITLE='PFILE=\"no.png\"'>\n" +
               objects + "</DOCUMENT>\n</SCRIBUSUTF8NEW>\n";
    }
    static QByteArray Object(const QByteArray& number, const QByteArray& attributes)
    {
        return "<PAGEOBJECT ItemID=\"" + number + "\" PTYPE=\"2\" " + attributes +
               "><StoryText><ITEXT CH=\"PFILE\"/></StoryText></PAGEOBJECT>\n";
    }
    static QByteArray Picture(const QByteArray& number, const QByteArray& path)
    {
        return Object(number, "PFILE=\"" + path + "\" PRFILE=\"sRGB\"");
    }
    static QByteArray Packed(const QByteArray& text)
    {
        return QByteArray::fromStdString(
            PluginKit::Compressed(PluginKit::Compression::Gzip, text.toStdString()));
    }
    Links Objects(const QByteArray& objects)
    {
        tree.File(m_name, File(objects));
        return Read(m_name);
    }

    const QString m_name = u"p/a.sla"_s;

private:
    Formats::Scribus::ScribusResolver m_resolver;
};

} // namespace Halvern::Test
