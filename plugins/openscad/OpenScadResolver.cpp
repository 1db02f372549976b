// SPDX-License-Identifier: Apache-2.0

#include "OpenScadResolver.h"

#include "ScadDocument.h"

namespace Halvern::Formats::OpenScad {

OpenScadResolver::OpenScadResolver()
    : DocumentResolver([](const std::filesystem::path& file) -> std::unique_ptr<Document> {
          return std::make_unique<ScadDocument>(file);
      })
{}

} // namespace Halvern::Formats::OpenScad
