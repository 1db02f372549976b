// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "FormatFixture.h"

#include "meshes/MeshResolver.h"

namespace Halvern::Test {

using namespace Qt::StringLiterals;

/// The resolver of meshes, and files of its formats part by part.
class MeshesFixture : public ResolverFixture
{
protected:
    MeshesFixture() : ResolverFixture(m_resolver) {}

    Links LinksOf(const QString& file, const QByteArray& content)
    {
        tree.File(file, content);
        return Read(file);
    }
    std::string Failure(const QString& file, const QByteArray& content)
    {
        return ReadFailure(file, content).toStdString();
    }

    static QByteArray Number(quint64 number, int size, bool isBigEndian)
    {
        QByteArray bytes;
        for (int i = 0; i < size; ++i)
            bytes.append(
                static_cast<char>((number >> (8 * (isBigEndian ? size - 1 - i : i))) & 0xFF));
        return bytes;
    }
    static QByteArray Text(const QByteArray& text) { return text + '\0'; }

    /// Of a 3DS file.
    static QByteArray Chunk(quint16 kind, const QByteArray& content)
    {
        return Number(kind, 2, false) + Number(static_cast<quint64>(content.size()) + 6, 4, false) +
               content;
    }
    static QByteArray Material(const QByteArray& name, quint16 map, const QByteArray& file)
    {
        return Chunk(0xAFFF, Chunk(0xA000, Text(name)) + Chunk(0xA010, "colour") +
                                 Chunk(map, Chunk(0x0030, "ab") + Chunk(0xA300, Text(file)) +
                                                Chunk(0xA351, "cd")));
    }
    static QByteArray ThreeDs(const QByteArray& editor)
    {
        return Chunk(0x4D4D, Chunk(0x0002, "abcd") + Chunk(0x3D3D, editor) + Chunk(0xB000, "keys"));
    }

    /// Of a LightWave object: with a zero to an even length.
    static QByteArray Padded(const QByteArray& text)
    {
        return text.size() % 2 ? text + '\0' : text;
    }
    static QByteArray Part(const QByteArray& kind, const QByteArray& content, int sizeBytes)
    {
        return kind + Number(static_cast<quint64>(content.size()), sizeBytes, true) +
               Padded(content);
    }
    static QByteArray Name(const QByteArray& text) { return Padded(Text(text)); }
    static QByteArray LightWave(const QByteArray& kind, const QByteArray& chunks)
    {
        return Part("FORM", kind + chunks, 4);
    }
    static QByteArray Clip(quint32 number, const QByteArray& parts)
    {
        return Part("CLIP", Number(number, 4, true) + parts, 4);
    }

    /// Of a binary DirectX file.
    static QByteArray Token(quint16 token) { return Number(token, 2, false); }
    static QByteArray NameToken(const QByteArray& name)
    {
        return Token(1) + Number(static_cast<quint64>(name.size()), 4, false) + name;
    }
    static QByteArray StringToken(const QByteArray& text)
    {
        return Token(2) + Number(static_cast<quint64>(text.size()), 4, false) + text + Token(20);
    }
    static QByteArray BinaryTexture(const QByteArray& file)
    {
        return NameToken("TextureFilename") + Token(10) + StringToken(file) + Token(11);
    }

private:
    Formats::Meshes::MeshResolver m_resolver;
};

inline Link L(const char16_t* id, const char16_t* path)
{
    return {QString::fromUtf16(id), QString::fromUtf16(path)};
}

} // namespace Halvern::Test
