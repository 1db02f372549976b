#include "WavefrontResolver.h"

#include "MtlDocument.h"
#include "ObjDocument.h"

#include "common/Utf.h"

namespace Halvern::Formats::Wavefront {

namespace {

std::unique_ptr<Document> Open(const std::filesystem::path& file)
{
    const std::string extension = PathToUtf8(file.extension());
    if (extension == ".mtl" || extension == ".MTL" || extension == ".Mtl")
        return std::make_unique<MtlDocument>(file);
    return std::make_unique<ObjDocument>(file);
}

} // namespace

WavefrontResolver::WavefrontResolver() : DocumentResolver(Open) {}

} // namespace Halvern::Formats::Wavefront
