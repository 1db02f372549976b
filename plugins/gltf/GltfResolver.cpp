// SPDX-License-Identifier: Apache-2.0

#include "GltfResolver.h"

#include "GltfDocument.h"

namespace Halvern::Formats::Gltf {

GltfResolver::GltfResolver()
    : DocumentResolver([](const std::filesystem::path& file) -> std::unique_ptr<Document> {
          return std::make_unique<GltfDocument>(file);
      })
{}

} // namespace Halvern::Formats::Gltf
