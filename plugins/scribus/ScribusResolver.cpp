// SPDX-License-Identifier: Apache-2.0

#include "ScribusResolver.h"

#include "ScribusDocument.h"

#include "KitNames.h"
#include "pluginkit/Compression.h"
#include "pluginkit/FormatError.h"
#include "pluginkit/Utf.h"

#include <algorithm>
#include <array>

namespace Halvern::Formats::Scribus {

namespace {

/// What something else packed.
class OtherDocument : public Document
{
public:
    std::vector<DocumentLink> Links() const override { return {}; }
    void Rewrite(const NewPaths&) override {}
};

std::string LowerName(const std::filesystem::path& file)
{
    std::string name = PathToUtf8(file.filename());
    std::transform(name.begin(), name.end(), name.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; });
    return name;
}

/// A copy may be called "a.sla (2).gz": what is in the file tells.
bool HoldsDocument(const std::filesystem::path& path)
{
    constexpr std::string_view mark = "<SCRIBUS";
    std::array<char, 4096> start{};
    try {
        const InputFile file(path);
        Decompressor content(file, DecompressedLimit(file.Size()));
        const std::size_t size = content.Read(start.data(), start.size());
        return std::string_view(start.data(), size).find(mark) != std::string_view::npos;
    } catch (const FormatError&) {
        return false;
    }
}

bool IsOther(const std::filesystem::path& file)
{
    const std::string name = LowerName(file);
    return name.ends_with(".gz") && !name.ends_with(".sla.gz") && !name.ends_with(".scd.gz") &&
           !HoldsDocument(file);
}

std::unique_ptr<Document> Open(const std::filesystem::path& file)
{
    if (IsOther(file))
        return std::make_unique<OtherDocument>();
    return std::make_unique<ScribusDocument>(file);
}

} // namespace

ScribusResolver::ScribusResolver() : DocumentResolver(Open) {}

} // namespace Halvern::Formats::Scribus
