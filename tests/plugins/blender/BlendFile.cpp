// SPDX-License-Identifier: Apache-2.0

#include "BlendFile.h"

#include <stdexcept>

namespace Halvern::Test {

namespace {

const QHash<QByteArray, qsizetype> PlainSizes = {
    {"char", 1}, {"short", 2}, {"int", 4}, {"void", 0}};

/// The name of a member without what is around it.
QByteArray PlainName(QByteArray name)
{
    name = name.left(name.indexOf('[') < 0 ? name.size() : name.indexOf('['));
    return name.startsWith('*') ? name.mid(1) : name;
}

void Align(QByteArray& bytes)
{
    while (bytes.size() % 4 != 0)
        bytes.append('\0');
}

/// Blender's lists of texts: a mark, a count, the texts.
QByteArray Texts(const Machine& machine, const char* mark, const QList<QByteArray>& texts)
{
    QByteArray bytes = mark + machine.Number(static_cast<quint64>(texts.size()), 4);
    for (const QByteArray& text : texts)
        bytes += text + '\0';
    return bytes;
}

} // namespace

QByteArray Machine::Number(quint64 number, qsizetype size) const
{
    QByteArray bytes(size, '\0');
    for (qsizetype i = 0; i < size; ++i)
        bytes[bigEndian ? size - 1 - i : i] = static_cast<char>((number >> (8 * i)) & 0xFFU);
    return bytes;
}

BlendFile::BlendFile(const Machine& machine) : m_machine(machine)
{
    Describe("Link", {{"Link", "*next"}, {"Link", "*prev"}});
    Describe("ListBase", {{"void", "*first"}, {"void", "*last"}});
    Describe("ID", {{"void", "*next"}, {"char", "name[66]"}, {"char", "_pad[6]"}});
    Describe("Library", {{"ID", "id"}, {"char", "name[40]"}, {"void", "*packedfile"}});
    Describe("Image", {{"ID", "id"},
                       {"void", "*gputexture[3][2]"},
                       {"char", "name[40]"},
                       {"short", "source"},
                       {"short", "_pad[3]"},
                       {"void", "*packedfile"},
                       {"ListBase", "packedfiles"},
                       {"ListBase", "tiles"}});
    Describe("ImageTile", {{"ImageTile", "*next"}, {"int", "tile_number"}, {"char", "label[4]"}});
    Describe("bSound", {{"ID", "id"}, {"char", "name[40]"}, {"void", "*packedfile"}});
    Describe("VFont", {{"ID", "id"}, {"char", "name[40]"}, {"void", "*packedfile"}});
    Describe("MovieClip", {{"ID", "id"}, {"char", "name[40]"}, {"int", "source"}});
    Describe("CacheFile", {{"ID", "id"}, {"char", "filepath[40]"}, {"char", "is_sequence"}});
    Describe("CacheFileLayer", {{"CacheFileLayer", "*next"}, {"char", "filepath[40]"}});
    Describe(
        "Volume",
        {{"ID", "id"}, {"char", "filepath[40]"}, {"void", "*packedfile"}, {"char", "is_sequence"}});
    Describe("Text", {{"ID", "id"}, {"char", "*name"}});
    Describe("Scene", {{"ID", "id"}, {"void", "*ed"}});
    Describe("Sequence",
             {{"char", "name[64]"}, {"int", "type"}, {"Strip", "*strip"}, {"bSound", "*sound"}});
    Describe("Strip", {{"StripElem", "*stripdata"}, {"char", "dir[40]"}});
    Describe("StripElem", {{"char", "name[24]"}, {"int", "orig_width"}});
    Describe("Material", {{"ID", "id"}});
    Describe("NodeShaderTexIES", {{"int", "mode"}, {"char", "filepath[40]"}});
}

void BlendFile::Describe(const QByteArray& name, std::initializer_list<Member> members)
{
    for (Structure& known : m_structures) {
        if (known.name == name) {
            known.members = members;
            return;
        }
    }
    m_structures.append({name, members});
}

qsizetype BlendFile::IndexOf(const QByteArray& structure) const
{
    for (qsizetype i = 0; i < m_structures.size(); ++i) {
        if (m_structures[i].name == structure)
            return i;
    }
    throw std::invalid_argument(structure.toStdString());
}

qsizetype BlendFile::SizeOf(const QByteArray& type) const
{
    if (PlainSizes.contains(type))
        return PlainSizes.value(type);
    qsizetype size = 0;
    for (const Member& member : m_structures[IndexOf(type)].members)
        size += SizeOf(member);
    return size;
}

qsizetype BlendFile::SizeOf(const Member& member) const
{
    qsizetype size = member.name.startsWith('*') ? m_machine.pointerSize : SizeOf(member.type);
    const QList<QByteArray> parts = member.name.split('[');
    for (qsizetype i = 1; i < parts.size(); ++i)
        size *= parts[i].chopped(1).toInt();
    return size;
}

std::pair<qsizetype, qsizetype> BlendFile::Place(const QByteArray& structure,
                                                 const QByteArray& path) const
{
    const qsizetype dot = path.indexOf('.');
    qsizetype offset = 0;
    for (const Member& member : m_structures[IndexOf(structure)].members) {
        if (PlainName(member.name) == path.left(dot < 0 ? path.size() : dot)) {
            if (dot < 0)
                return {offset, SizeOf(member)};
            const auto [inner, size] = Place(member.type, path.mid(dot + 1));
            return {offset + inner, size};
        }
        offset += SizeOf(member);
    }
    throw std::invalid_argument(path.toStdString());
}

QByteArray BlendFile::Record(const QByteArray& structure, const Values& values) const
{
    QByteArray record(SizeOf(structure), '\0');
    for (const auto& [path, value] : values) {
        const auto [offset, size] = Place(structure, path);
        const QByteArray bytes =
            value.isNumber ? m_machine.Number(value.number, size) : value.bytes + '\0';
        record.replace(offset, bytes.size(), bytes);
    }
    return record;
}

BlendFile& BlendFile::Add(const QByteArray& code, const QByteArray& structure, const Values& values,
                          quint64 address)
{
    return AddBytes(code, structure, Record(structure, values), address);
}

BlendFile& BlendFile::AddBytes(const QByteArray& code, const QByteArray& structure,
                               const QByteArray& bytes, quint64 address, quint64 count)
{
    m_blocks += Block(code, bytes, address, static_cast<quint64>(IndexOf(structure)), count);
    return *this;
}

QByteArray BlendFile::Header() const
{
    return QByteArray("BLENDER") + (m_machine.isLarge ? "17" : "") +
           (m_machine.pointerSize == 8 ? '-' : '_') + (m_machine.isLarge ? "01" : "") +
           (m_machine.bigEndian ? 'V' : 'v') + m_machine.version;
}

QByteArray BlendFile::Block(const QByteArray& code, const QByteArray& data, quint64 address,
                            quint64 structIndex, quint64 count) const
{
    const QByteArray padded =
        m_machine.bigEndian ? code.rightJustified(4, '\0') : code.leftJustified(4, '\0');
    const QByteArray pointer = m_machine.Number(address, m_machine.pointerSize);
    const auto size = static_cast<quint64>(data.size());
    if (m_machine.isLarge)
        return padded + m_machine.Number(structIndex, 4) + pointer + m_machine.Number(size, 8) +
               m_machine.Number(count, 8) + data;
    return padded + m_machine.Number(size, 4) + pointer + m_machine.Number(structIndex, 4) +
           m_machine.Number(count, 4) + data;
}

QByteArray BlendFile::Dna() const
{
    QList<QByteArray> names;
    QList<QByteArray> types = PlainSizes.keys();
    QByteArray structs;
    const auto indexIn = [&](QList<QByteArray>& list, const QByteArray& text) {
        if (!list.contains(text))
            list.append(text);
        return m_machine.Number(static_cast<quint64>(list.indexOf(text)), 2);
    };
    for (const Structure& structure : m_structures) {
        structs += indexIn(types, structure.name) +
                   m_machine.Number(static_cast<quint64>(structure.members.size()), 2);
        for (const Member& member : structure.members) {
            structs += indexIn(types, member.type);
            structs += indexIn(names, member.name);
        }
    }
    QByteArray dna = "SDNA" + Texts(m_machine, "NAME", names);
    Align(dna);
    dna += Texts(m_machine, "TYPE", types);
    Align(dna);
    dna += "TLEN";
    for (const QByteArray& type : types)
        dna += m_machine.Number(static_cast<quint64>(SizeOf(type)), 2);
    Align(dna);
    return dna + "STRC" + m_machine.Number(static_cast<quint64>(m_structures.size()), 4) + structs;
}

QByteArray BlendFile::Bytes() const
{
    return BytesWithoutEnd() + Block("ENDB", {});
}

QByteArray BlendFile::BytesWithoutEnd() const
{
    return Header() + m_blocks + Block("DNA1", Dna());
}

} // namespace Halvern::Test
