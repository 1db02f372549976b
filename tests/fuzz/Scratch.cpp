// SPDX-License-Identifier: Apache-2.0

#include "Scratch.h"

#include "Target.h"

#include <cstdlib>
#include <fstream>
#include <random>

namespace Halvern::Fuzz {

namespace {

struct Neighbour
{
    const char* name;
    const char* content;
};

constexpr Neighbour Neighbours[] = {
    {"a.png", "PNG"},
    {"b.png", "PNG"},
    {"tex/wood.1001.png", "PNG"},
    {"tex/wood.1002.png", "PNG"},
    {"tex/frame_0001.png", "PNG"},
    {"tex/frame_0002.png", "PNG"},
    {"a b.png", "PNG"},
    {"a%20b.png", "PNG"},
    {"main.mtl", "newmtl a\nmap_Kd a.png\n"},
    {"a.mtl", "newmtl a\n"},
    {"b c.mtl", "newmtl a\n"},
    {"part.scad", "import(\"a.stl\"); include <sub/deep.scad>\n"},
    {"sub/deep.scad", "import(\"b.stl\"); use <../part.scad>\n"},
    {"a.stl", "solid\n"},
    {"sub/b.stl", "solid\n"},
    {"part.stp", "ISO-10303-21;\nEND-ISO-10303-21;\n"},
    {"lib.blend", "BLENDER"},
    {"other.FCStd", "PK"},
    {"style.css", "@import 'sub/more.css';"},
    {"sub/more.css", "a{}"},
    {"board.kicad_pro", "{}"},
    {"main.kicad_dru", "(version 1)"},
    {"sub.kicad_sch", "(kicad_sch)"},
    {"a.wrl", "#VRML"},
    {"a.step", "ISO-10303-21;"},
    {"own.lib", ".subckt a\n.ends\n"},
    {"own.dcm", "EESchema-DOCLIB  Version 2.0\n"},
    {"own.pretty/R.kicad_mod", "(footprint \"R\")"},
    {"fp-lib-table",
     "(fp_lib_table (lib (name own)(type KiCad)(uri ${KIPRJMOD}/own.pretty)(options \"\")))"},
    {"sym-lib-table",
     "(sym_lib_table (lib (name own)(type Legacy)(uri ${KIPRJMOD}/own.lib)(options \"\")))"},
};

std::filesystem::path Place()
{
    if (const char* given = std::getenv("CORSYNC_FUZZ_FOLDER"))
        return given;
    return std::filesystem::temp_directory_path();
}

class Folder
{
public:
    Folder() : m_path(Place() / ("corsync-fuzz-" + std::to_string(std::random_device{}())))
    {
        for (const Neighbour& neighbour : Neighbours) {
            const std::filesystem::path file = m_path / neighbour.name;
            std::filesystem::create_directories(file.parent_path());
            WriteFile(file, neighbour.content);
        }
    }
    ~Folder()
    {
        std::error_code ignored;
        std::filesystem::remove_all(m_path, ignored);
    }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;
    const std::filesystem::path& Path() const { return m_path; }

private:
    std::filesystem::path m_path;
};

} // namespace

const std::filesystem::path& ScratchFolder()
{
    static const Folder folder;
    return folder.Path();
}

void WriteFile(const std::filesystem::path& file, std::string_view bytes)
{
    std::ofstream stream(file, std::ios::binary | std::ios::trunc);
    stream.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    stream.close();
    Require(bool(stream), "the scratch folder cannot be written");
}

std::string ReadFile(const std::filesystem::path& file)
{
    std::ifstream stream(file, std::ios::binary);
    Require(bool(stream), "the file is gone: " + file.filename().string());
    std::string bytes(static_cast<std::size_t>(std::filesystem::file_size(file)), '\0');
    stream.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    return bytes;
}

} // namespace Halvern::Fuzz
