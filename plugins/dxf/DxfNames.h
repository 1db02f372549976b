// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "KitNames.h"
#include "pluginkit/InputFile.h"

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace Halvern::Formats::Dxf {

enum class NameKind
{
    /// Drawings, pictures, underlays and point clouds, which are missed when they are not there.
    Reference,
    /// A picture of a material, which may be one of the program's own.
    Map,
    /// A font or a file of shapes, found by its name in the drawing's folder and in those of the
    /// program.
    Font
};

/// The name of a file as a drawing stores it.
struct DxfName
{
    NameKind kind = NameKind::Reference;
    /// What names the file, and its handle or name: "image 5A", "block Plan", "material 7F map 3",
    /// "style Standard font". The drawing's own part of it is undecoded.
    std::string id;
    std::string raw;
    /// The bytes of `raw`.
    std::uint64_t begin = 0;
    std::uint64_t end = 0;
};

struct DxfNames
{
    std::vector<DxfName> names;
    /// $ACADVER and $DWGCODEPAGE; empty when they are not there.
    std::string version;
    std::string codePage;
};

/// More names than this are refused.
inline constexpr std::size_t MaxDxfNames = 100'000;

/// The names of a drawing, in its order. Goes through a file of any size in blocks. FormatError,
/// with its place, for what is no drawing or is damaged.
DxfNames FindDxfNames(const InputFile& file);

} // namespace Halvern::Formats::Dxf
