// SPDX-License-Identifier: Apache-2.0

#include "FreecadResolver.h"

#include "FreecadDocument.h"

namespace Halvern::Formats::Freecad {

FreecadResolver::FreecadResolver()
    : DocumentResolver([](const std::filesystem::path& file) -> std::unique_ptr<Document> {
          return std::make_unique<FreecadDocument>(file);
      })
{}

} // namespace Halvern::Formats::Freecad
