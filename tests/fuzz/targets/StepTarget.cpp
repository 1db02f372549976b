// SPDX-License-Identifier: Apache-2.0

#include "FormatTrial.h"
#include "Scratch.h"
#include "Target.h"

#include "step/StepDocument.h"
#include "step/StepResolver.h"

namespace Halvern::Fuzz {

namespace {

void Try(std::string_view input)
{
    static Formats::Step::StepResolver resolver;
    TryFormat({.fileName = "main.stp",
               .resolver = resolver,
               .open = OpenDocument<Formats::Step::StepDocument>,
               .content = ReadFile,
               .placesOfLink = 3},
              input);
}

const RegisteredTarget Registered("step", Try);

} // namespace

} // namespace Halvern::Fuzz
