// SPDX-License-Identifier: Apache-2.0

#include "FormatTrial.h"
#include "Scratch.h"
#include "Target.h"

#include "openscad/OpenScadResolver.h"
#include "openscad/ScadDocument.h"

namespace Halvern::Fuzz {

namespace {

void Try(std::string_view input)
{
    static Formats::OpenScad::OpenScadResolver resolver;
    TryFormat({.fileName = "main.scad",
               .resolver = resolver,
               .open = OpenDocument<Formats::OpenScad::ScadDocument>,
               .content = ReadFile},
              input);
}

const RegisteredTarget Registered("openscad", Try);

} // namespace

} // namespace Halvern::Fuzz
