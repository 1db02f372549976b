// SPDX-License-Identifier: Apache-2.0

#include "FormatTrial.h"
#include "Scratch.h"
#include "Target.h"

#include "solvespace/SlvsDocument.h"
#include "solvespace/SolveSpaceResolver.h"

namespace Halvern::Fuzz {

namespace {

void Try(std::string_view input)
{
    static Formats::SolveSpace::SolveSpaceResolver resolver;
    TryFormat({.fileName = "main.slvs",
               .resolver = resolver,
               .open = OpenDocument<Formats::SolveSpace::SlvsDocument>,
               .content = ReadFile},
              input);
}

const RegisteredTarget Registered("solvespace", Try);

} // namespace

} // namespace Halvern::Fuzz
