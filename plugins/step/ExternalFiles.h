// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "StepScanner.h"

#include <map>
#include <vector>

namespace Halvern::Formats::Step {

/// One file that an exchange file refers to, with the strings that name it.
struct ExternalFile
{
    /// The instance that makes the reference, or the document that stands alone.
    std::uint64_t instance = 0;
    /// Of the APPLIED_EXTERNAL_IDENTIFICATION_ASSIGNMENT: what readers follow first.
    StepString assigned;
    /// Of its DOCUMENT_FILE: what they follow when the first leads nowhere.
    StepString document;
    /// Of its EXTERNAL_SOURCE: what they follow when the first is empty.
    StepString source;
};

/// More references than this are refused.
inline constexpr std::size_t MaxExternalFiles = 100'000;

/// The references of a file, in its order; strings that are not there are empty. FormatError for a
/// file that is damaged.
std::vector<ExternalFile> FindExternalFiles(const InputFile& file);

} // namespace Halvern::Formats::Step
