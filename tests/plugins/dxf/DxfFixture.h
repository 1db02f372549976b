// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "FormatFixture.h"

#include "dxf/DxfResolver.h"

namespace Halvern::Test {

using namespace Qt::StringLiterals;

class DxfFixture : public ResolverFixture
{
protected:
    DxfFixture() : ResolverFixture(m_resolver) {}

    static QByteArray Group(int code, const QByteArray& value)
    {
        return QByteArray::number(code).rightJustified(3) + '\n' + value + '\n';
    }
    static QByteArray Block(const QByteArray& name, const QByteArray& path, int flags = 4)
    {
        return Group(0, "BLOCK") + Group(5, "1F") + Group(2, name) +
               Group(70, QByteArray::number(flags)) + Group(3, name) + Group(1, path);
    }
    static QByteArray Definition(const QByteArray& kind, const QByteArray& handle,
                                 const QByteArray& path)
    {
        return Group(0, kind) + Group(5, handle) + Group(102, "{ACAD_REACTORS") + Group(330, "1A") +
               Group(102, "}") + Group(100, "AcDbRasterImageDef") + Group(1, path) + Group(2, "1") +
               Group(1001, "APP") + Group(1000, "no.png");
    }
    static QByteArray Image(const QByteArray& handle, const QByteArray& path)
    {
        return Definition("IMAGEDEF", handle, path);
    }
    /// A drawing of a version and a code page with these objects.
    static QByteArray File(const QByteArray& objects, const QByteArray& version = "AC1032",
                           const QByteArray& codePage = "ANSI_1252")
    {
        return Group(999, "a comment") + Group(0, "SECTION") + Group(2, "HEADER") +
               Group(9, "$ACADVER") + Group(1, version) + Group(9, "$DWGCODEPAGE") +
               Group(3, codePage) + Group(9, "$MENU") + Group(1, "no.mnu") + Group(0, "ENDSEC") +
               Group(0, "SECTION") + Group(2, "OBJECTS") + Group(0, "TEXT") + Group(1, "no.dxf") +
               objects + Group(0, "ENDSEC") + Group(0, "EOF");
    }
    Links Objects(const QByteArray& objects, const QByteArray& version = "AC1032",
                  const QByteArray& codePage = "ANSI_1252")
    {
        tree.File(m_name, File(objects, version, codePage));
        return Read(m_name);
    }

    const QString m_name = u"p/a.dxf"_s;

private:
    Formats::Dxf::DxfResolver m_resolver;
};

/// Builds binary drawings, with codes of one byte as up to release 12, or of two.
class BinaryDxf
{
public:
    explicit BinaryDxf(bool hasShortCodes) : m_hasShortCodes(hasShortCodes) {}

    BinaryDxf& Text(int code, const QByteArray& value) { return Raw(code, value + '\0'); }
    BinaryDxf& Int16(int code, int value) { return Raw(code, Bytes(value, 2)); }
    BinaryDxf& Zeros(int code, qsizetype size) { return Raw(code, QByteArray(size, '\0')); }
    BinaryDxf& Raw(int code, const QByteArray& value)
    {
        if (!m_hasShortCodes)
            m_bytes += Bytes(code, 2);
        else if (code < 255)
            m_bytes += static_cast<char>(code);
        else
            m_bytes += '\xFF' + Bytes(code, 2);
        m_bytes += value;
        return *this;
    }
    QByteArray Get() const { return m_bytes; }

private:
    static QByteArray Bytes(int value, int size)
    {
        QByteArray bytes;
        for (int i = 0; i < size; ++i)
            bytes += static_cast<char>(value >> (8 * i));
        return bytes;
    }

    bool m_hasShortCodes;
    QByteArray m_bytes = QByteArray("AutoCAD Binary DXF\r\n\x1A\0", 22);
};

} // namespace Halvern::Test
