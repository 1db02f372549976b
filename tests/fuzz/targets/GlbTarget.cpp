// SPDX-License-Identifier: Apache-2.0

#include "FormatTrial.h"
#include "Scratch.h"
#include "Target.h"

#include "gltf/GltfDocument.h"
#include "gltf/GltfResolver.h"

namespace Halvern::Fuzz {

namespace {

void Try(std::string_view input)
{
    static Formats::Gltf::GltfResolver resolver;
    TryFormat({.fileName = "main.glb",
               .resolver = resolver,
               .open = OpenDocument<Formats::Gltf::GltfDocument>,
               .content = ReadFile,
               .furtherBytes = 64},
              input);
}

const RegisteredTarget Registered("glb", Try);

} // namespace

} // namespace Halvern::Fuzz
