// SPDX-License-Identifier: Apache-2.0

#include "FormatTrial.h"
#include "Scratch.h"
#include "Target.h"

#include "wavefront/ObjDocument.h"
#include "wavefront/WavefrontResolver.h"

namespace Halvern::Fuzz {

namespace {

void Try(std::string_view input)
{
    static Formats::Wavefront::WavefrontResolver resolver;
    TryFormat({.fileName = "main.obj",
               .resolver = resolver,
               .open = OpenDocument<Formats::Wavefront::ObjDocument>,
               .content = ReadFile,
               .areIdsVague = true},
              input);
}

const RegisteredTarget Registered("obj", Try);

} // namespace

} // namespace Halvern::Fuzz
