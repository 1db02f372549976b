// SPDX-License-Identifier: Apache-2.0

// kit_parts ARCHIVE ENTRY: packs an entry of a ZIP archive with gzip and zstd and prints how often
// its XML has each of the elements in it.

#include <pluginkit/PluginKit.h>

#include <fstream>
#include <iostream>

namespace {

using namespace Halvern::PluginKit;

struct Counter : XmlVisitor
{
    void Start(const XmlElement& element) override { ++counts[std::string(element.name)]; }
    void End(std::string_view, std::size_t) override {}

    std::map<std::string, int> counts;
};

std::string ThereAndBack(Compression compression, const std::string& text)
{
    const std::filesystem::path path = "packed";
    std::ofstream(path, std::ios::binary) << Compressed(compression, text);
    const InputFile file(path);
    if (CompressionOf(file) != compression)
        throw FormatError("packed in another way");
    return ReadDecompressed(file, text.size());
}

void Run(const char* archiveName, const char* entry)
{
    InputFile file{archiveName};
    const ZipArchive archive(file);
    const std::string text = archive.Read(entry, 1 << 20).value();
    for (const Compression compression : {Compression::Gzip, Compression::Zstd})
        if (ThereAndBack(compression, text) != text)
            throw FormatError("another text comes back");
    Counter counter;
    ReadXml(text, counter);
    for (const auto& [name, count] : counter.counts)
        std::cout << name << ' ' << count << '\n';
}

} // namespace

int main(int, char** arguments)
try {
    Run(arguments[1], arguments[2]);
    return 0;
} catch (const std::exception& error) {
    std::cerr << error.what() << '\n';
    return 1;
}
