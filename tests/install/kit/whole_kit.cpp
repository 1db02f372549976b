// SPDX-License-Identifier: Apache-2.0

// whole_kit FILE: calls into every part of the kit, so that each must be there with what it needs.
// Writes FILE; ends with 0 when all is as it should be.

#include "pluginkit/Compression.h"
#include "pluginkit/FormatError.h"
#include "pluginkit/Xml.h"
#include "pluginkit/ZipArchive.h"

#include <fstream>
#include <iostream>

using namespace Halvern::PluginKit;

namespace {

void Write(const char* path, const std::string& bytes)
{
    std::ofstream(path, std::ios::binary) << bytes;
}

bool ComesBack(const char* path, Compression compression)
{
    const std::string text(300'000, 'x');
    Write(path, Compressed(compression, text));
    const InputFile file(path);
    return CompressionOf(file) == compression && file.Size() < text.size() &&
           ReadDecompressed(file, DecompressedLimit(file.Size())) == text;
}

/// No archive at all must be refused.
bool RefusesArchive(const char* path)
{
    Write(path, "This is no archive.");
    InputFile file(path);
    try {
        const ZipArchive archive(file);
    } catch (const FormatError&) {
        return true;
    }
    return false;
}

struct Counter : XmlVisitor
{
    void Start(const XmlElement&) override { ++started; }
    void End(std::string_view, std::size_t) override {}

    int started = 0;
};

bool ReadsXml()
{
    Counter counter;
    ReadXml("<a><b/><b/></a>", counter);
    return counter.started == 3;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 2)
        return 2;
    const bool gzip = ComesBack(argv[1], Compression::Gzip);
    const bool zstd = ComesBack(argv[1], Compression::Zstd);
    const bool zip = RefusesArchive(argv[1]);
    const bool xml = ReadsXml();
    std::cout << "gzip " << gzip << ", zstd " << zstd << ", zip " << zip << ", xml " << xml << '\n';
    return gzip && zstd && zip && xml ? 0 : 1;
}
