// SPDX-License-Identifier: Apache-2.0

#include "BlendResolver.h"

#include "BlendDocument.h"

namespace Halvern::Formats::Blender {

BlendResolver::BlendResolver()
    : DocumentResolver([](const std::filesystem::path& file) -> std::unique_ptr<Document> {
          return std::make_unique<BlendDocument>(file);
      })
{}

} // namespace Halvern::Formats::Blender
