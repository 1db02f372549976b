// SPDX-License-Identifier: Apache-2.0

#include "LinkFinder.h"

#include "DataBlock.h"
#include "StoredPaths.h"

#include "KitNames.h"
#include "pluginkit/FormatError.h"
#include "pluginkit/Utf.h"

#include <algorithm>
#include <unordered_set>

namespace Halvern::Formats::Blender {

namespace {

/// Blender's own descriptions have some 100 KiB.
constexpr std::uint64_t MaxDnaSize = std::uint64_t(4) << 20;
constexpr std::uint64_t MaxPathSize = std::uint64_t(64) << 10;
/// Of all texts that are kept: a compressed file can hold any number of long ones.
constexpr std::size_t MaxTextSize = std::size_t(64) << 20;

Dna ReadDna(const InputFile& file)
{
    Blocks blocks(file);
    while (const std::optional<BlockHeader> block = blocks.Next()) {
        if (block->code != "DNA1")
            continue;
        if (block->size > MaxDnaSize)
            throw FormatError("the file's description of its structs is larger than 4 MiB",
                              block->sizeField);
        return Dna(blocks.ReadData(block->size), blocks.Form(), block->dataBegin);
    }
    throw FormatError("the file has no description of its structs");
}

/// Not every version has it.
constexpr std::string_view IconOfBrush = "icon_filepath";

/// A part of a data block that holds a path: a modifier, a layer, a node.
struct PathPart
{
    const char* structure;
    const char* field;
    /// A member that must be 1 for the path to count; null for none.
    const char* isExternal;
};

constexpr PathPart PathParts[] = {
    {"CacheFileLayer", "filepath", nullptr},        {"CustomDataExternal", "filename", nullptr},
    {"MeshCacheModifierData", "filepath", nullptr}, {"NodeShaderScript", "filepath", "mode"},
    {"NodeShaderTexIES", "filepath", "mode"},
};

class LinkFinder
{
public:
    explicit LinkFinder(const InputFile& file)
        : m_dna(ReadDna(file)), m_blocks(file), m_paths(file.Path().parent_path())
    {
        // Since Blender 4.4 these are the structs' names; files may keep the old ones.
        if (m_dna.Find("StripData")) {
            m_sequence = "Strip";
            m_strip = "StripData";
        }
    }

    BlendLinks Find()
    {
        while (const std::optional<BlockHeader> block = m_blocks.Next()) {
            if (block->code != "DNA1")
                Visit(*block);
        }
        Finish();
        return {m_blocks.Form(), m_paths.Take()};
    }

private:
    void Visit(const BlockHeader& block)
    {
        const DnaStruct* structure = m_dna.StructAt(block.structIndex);
        if (!structure)
            throw FormatError("a block of a struct that the file does not describe",
                              block.dataBegin);
        // Data blocks have codes of two letters; other blocks in between belong to the last one.
        if (block.code.ends_with(std::string_view("\0\0", 2))) {
            Finish();
            if (Dna::IsDataBlock(*structure))
                Begin(block, *structure);
        } else if (m_current && block.code == "DATA") {
            VisitPart(block, *structure);
        }
    }

    void Finish()
    {
        if (m_current)
            m_paths.Add(*m_current);
        m_current.reset();
    }

    void Begin(const BlockHeader& block, const DnaStruct& structure)
    {
        const std::string bytes = m_blocks.ReadData(structure.size);
        const StructView view(m_dna, structure, m_blocks.Form(), bytes, block.dataBegin);
        m_current.emplace();
        m_current->type = structure.name;
        m_current->name = Utf8OrLatin1(view.Text({"id.name"}).value);
        m_current->address = block.address;
        m_current->isPacked =
            view.Number("packedfile") != 0 || view.Number("packedfiles.first") != 0;
        m_current->source = view.Number("source", 1);
        m_current->isSequence = view.Number("is_sequence") != 0;
        if (structure.name == "Text")
            m_current->textAddress = view.Number("name", view.Number("filepath"));
        else if (structure.name == "Brush" && m_dna.FindField(structure, IconOfBrush))
            m_current->text = Kept(view.Text({IconOfBrush}));
        else if (StoredPaths::HasPathOfItsOwn(structure.name))
            m_current->text = Kept(view.Text({"name", "filepath"}));
    }

    template <typename Use>
    void ForEach(const BlockHeader& block, const DnaStruct& structure, const Use& use)
    {
        std::uint64_t position = block.dataBegin;
        for (std::uint64_t i = 0; i < block.count; ++i) {
            if (++m_read > MaxLinks)
                throw FormatError("more than " + std::to_string(MaxLinks) + " links", position);
            const std::string bytes = m_blocks.ReadData(structure.size);
            use(StructView(m_dna, structure, m_blocks.Form(), bytes, position));
            position += structure.size;
        }
    }

    /// The text, counted.
    StoredText Kept(StoredText text)
    {
        m_textSize += text.value.size();
        if (m_textSize > MaxTextSize)
            throw FormatError("paths and names of more than 64 MiB in all", text.begin);
        return text;
    }

    void VisitPart(const BlockHeader& block, const DnaStruct& structure)
    {
        DataBlock& current = *m_current;
        if (current.type == "Text" && block.address == current.textAddress)
            VisitPathOfText(block);
        else if (current.type == "Image" && structure.name == "ImageTile")
            ForEach(block, structure, [&](const StructView& view) {
                current.tiles.push_back(view.Number("tile_number"));
            });
        else if (current.type == "Scene")
            VisitPartOfScene(block, structure);
        for (const PathPart& part : PathParts) {
            if (structure.name == part.structure)
                VisitPathPart(block, structure, part);
        }
    }

    void VisitPathOfText(const BlockHeader& block)
    {
        if (block.size > MaxPathSize)
            throw FormatError("a path of " + std::to_string(block.size) + " bytes",
                              block.sizeField);
        const std::string bytes = m_blocks.ReadData(block.size);
        m_current->text = Kept(TextIn(bytes, block.dataBegin));
        m_current->text.sizeField = block.sizeField;
        m_current->text.sizeFieldSize = block.sizeFieldSize;
        m_current->textAddress = 0;
    }

    void VisitPartOfScene(const BlockHeader& block, const DnaStruct& structure)
    {
        DataBlock& scene = *m_current;
        if (structure.name == m_sequence)
            ForEach(block, structure, [&](const StructView& view) {
                scene.sequences.push_back(
                    {Utf8OrLatin1(Kept(view.Text({"name"})).value), view.Number("type"),
                     view.Number("strip", view.Number("data")), view.Number("sound")});
            });
        else if (structure.name == m_strip)
            ForEach(block, structure, [&](const StructView& view) {
                scene.strips[block.address] = {Kept(view.Text({"dir", "dirpath"})),
                                               view.Number("stripdata")};
            });
        else if (structure.name == "StripElem")
            ForEach(block, structure, [&](const StructView& view) {
                scene.stripFiles[block.address].push_back(Kept(view.Text({"name", "filename"})));
            });
    }

    void VisitPathPart(const BlockHeader& block, const DnaStruct& structure, const PathPart& part)
    {
        ForEach(block, structure, [&](const StructView& view) {
            const StoredText text = view.Text({part.field});
            const bool counts = !part.isExternal || view.Number(part.isExternal, 1) == 1;
            if (counts && !text.value.empty())
                m_current->parts.emplace_back(structure.name, Kept(text));
        });
    }

    Dna m_dna;
    Blocks m_blocks;
    StoredPaths m_paths;
    std::optional<DataBlock> m_current;
    std::string_view m_sequence = "Sequence";
    std::string_view m_strip = "Strip";
    std::size_t m_read = 0;
    std::size_t m_textSize = 0;
};

} // namespace

BlendLinks FindLinks(const InputFile& file)
{
    return LinkFinder(file).Find();
}

} // namespace Halvern::Formats::Blender
