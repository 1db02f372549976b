// SPDX-License-Identifier: Apache-2.0

#include "FormatTrial.h"
#include "Scratch.h"
#include "Target.h"

#include "openscad/OpenScadResolver.h"
#include "openscad/ScadDocument.h"

namespace Halvern::Fuzz {

namespace {

/// A name that is known only when the model runs is listed as the call that yields it, to be seen.
bool IsWritten(const Link& link)
{
    return !link.path.ends_with(')') && !link.path.ends_with("...");
}

void Try(std::string_view input)
{
    static Formats::OpenScad::OpenScadResolver resolver;
    TryFormat({.fileName = "main.scad",
               .resolver = resolver,
               .open = OpenDocument<Formats::OpenScad::ScadDocument>,
               .content = ReadFile,
               .isPath = IsWritten},
              input);
}

const RegisteredTarget Registered("openscad", Try);

} // namespace

} // namespace Halvern::Fuzz
