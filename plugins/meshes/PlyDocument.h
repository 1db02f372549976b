// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "MeshDocument.h"

namespace Halvern::Formats::Meshes {

/// A polygon file (.ply): comments of its header name pictures. The body is not read.
class PlyDocument : public MeshDocument
{
public:
    explicit PlyDocument(const std::filesystem::path& path);

protected:
    std::string Written(const NamedFile& old, const std::string& text) const override;

private:
    void ReadLine(std::string_view line, std::uint64_t begin);
};

} // namespace Halvern::Formats::Meshes
