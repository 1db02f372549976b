// SPDX-License-Identifier: Apache-2.0

#include "StepResolver.h"

#include "StepDocument.h"

namespace Halvern::Formats::Step {

StepResolver::StepResolver()
    : DocumentResolver([](const std::filesystem::path& file) -> std::unique_ptr<Document> {
          return std::make_unique<StepDocument>(file);
      })
{}

} // namespace Halvern::Formats::Step
