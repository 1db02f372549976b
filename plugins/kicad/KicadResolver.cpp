// SPDX-License-Identifier: Apache-2.0

#include "KicadResolver.h"

#include "KicadDocument.h"

namespace Halvern::Formats::Kicad {

KicadResolver::KicadResolver()
    : DocumentResolver([](const std::filesystem::path& file) -> std::unique_ptr<Document> {
          return std::make_unique<KicadDocument>(file);
      })
{}

} // namespace Halvern::Formats::Kicad
