// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QByteArray>
#include <QtCore/QHash>
#include <QtCore/QList>

#include <initializer_list>

namespace Halvern::Test {

/// The machine that a file is made for.
struct Machine
{
    int pointerSize = 8;
    bool bigEndian = false;
    /// Headers as of Blender 5.0.
    bool isLarge = false;
    /// Three digits, or four for those.
    QByteArray version = "304";

    QByteArray Number(quint64 number, qsizetype size) const;
};

/// Makes .blend files with a description of structs of its own, so that nothing but that
/// description tells a reader where things are:
///
///     BlendFile file;
///     file.Add("IM", "Image", {{"id.name", "IMWood"}, {"name", "//wood.png"}, {"source", 1}});
///     tree.File("a.blend", file.Bytes());
class BlendFile
{
public:
    /// A value of a member: a number, or bytes from the member's beginning on.
    struct Value
    {
        // NOLINTNEXTLINE(google-explicit-constructor)
        Value(quint64 n) : number(n), isNumber(true) {}
        Value(int n) : Value(static_cast<quint64>(n)) {}
        Value(const char* text) : bytes(text) {}
        Value(QByteArray text) : bytes(std::move(text)) {}

        QByteArray bytes;
        quint64 number = 0;
        bool isNumber = false;
    };
    using Values = std::initializer_list<std::pair<QByteArray, Value>>;

    explicit BlendFile(const Machine& machine = {});

    struct Member
    {
        QByteArray type;
        QByteArray name;
    };

    /// Adds a struct to the description, or gives one other members.
    void Describe(const QByteArray& name, std::initializer_list<Member> members);
    /// A struct's bytes.
    QByteArray Record(const QByteArray& structure, const Values& values) const;
    /// A block of one struct; data blocks of Blender have codes of two letters. The address is 0
    /// unless given.
    BlendFile& Add(const QByteArray& code, const QByteArray& structure, const Values& values,
                   quint64 address = 0);
    /// A block of `count` structs, or of plain bytes (structure "Link").
    BlendFile& AddBytes(const QByteArray& code, const QByteArray& structure,
                        const QByteArray& bytes, quint64 address, quint64 count = 1);

    /// With the description of the structs and the end.
    QByteArray Bytes() const;
    /// The same up to the end.
    QByteArray BytesWithoutEnd() const;

    QByteArray Header() const;
    QByteArray Block(const QByteArray& code, const QByteArray& data, quint64 address = 0,
                     quint64 structIndex = 0, quint64 count = 1) const;
    QByteArray Dna() const;
    const Machine& ForMachine() const { return m_machine; }

private:
    struct Structure
    {
        QByteArray name;
        QList<Member> members;
    };

    qsizetype IndexOf(const QByteArray& structure) const;
    qsizetype SizeOf(const QByteArray& type) const;
    qsizetype SizeOf(const Member& member) const;
    /// Offset and size of a member such as "id.name".
    std::pair<qsizetype, qsizetype> Place(const QByteArray& structure,
                                          const QByteArray& path) const;

    Machine m_machine;
    QList<Structure> m_structures;
    QByteArray m_blocks;
};

} // namespace Halvern::Test
