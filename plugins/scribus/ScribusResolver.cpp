// SPDX-License-Identifier: Apache-2.0

#include "ScribusResolver.h"

#include "ScribusDocument.h"

#include "KitNames.h"
#include "pluginkit/Utf.h"

#include <algorithm>

namespace Halvern::Formats::Scribus {

namespace {

/// What something else packed.
class OtherDocument : public Document
{
public:
    std::vector<DocumentLink> Links() const override { return {}; }
    void Rewrite(const NewPaths&) override {}
};

bool IsOther(const std::filesystem::path& file)
{
    std::string name = PathToUtf8(file.filename());
    std::transform(name.begin(), name.end(), name.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; });
    return name.ends_with(".gz") && !name.ends_with(".sla.gz") && !name.ends_with(".scd.gz");
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
