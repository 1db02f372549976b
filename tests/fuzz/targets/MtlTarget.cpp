// SPDX-License-Identifier: Apache-2.0

#include "FormatTrial.h"
#include "Scratch.h"
#include "Target.h"

#include "wavefront/MtlDocument.h"
#include "wavefront/WavefrontResolver.h"

namespace Halvern::Fuzz {

namespace {

void Try(std::string_view input)
{
    static Formats::Wavefront::WavefrontResolver resolver;
    TryFormat({.fileName = "a.mtl",
               .resolver = resolver,
               .open = OpenDocument<Formats::Wavefront::MtlDocument>,
               .content = ReadFile,
               .areIdsVague = true},
              input);
}

const RegisteredTarget Registered("mtl", Try);

} // namespace

} // namespace Halvern::Fuzz
