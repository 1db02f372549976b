// SPDX-License-Identifier: Apache-2.0

#include "FormatTrial.h"
#include "Scratch.h"
#include "Target.h"

#include "dxf/DxfDocument.h"
#include "dxf/DxfResolver.h"

namespace Halvern::Fuzz {

namespace {

/// What is not where a drawing says is looked for beside it: a layout puts a file where it says.
bool IsFoundThere(const Link&, const std::string& path)
{
    const std::string name = path.substr(path.rfind('/') + 1);
    std::error_code ignored;
    return name == path || std::filesystem::exists(ScratchFolder() / path, ignored) ||
           !std::filesystem::exists(ScratchFolder() / name, ignored);
}

void Try(std::string_view input)
{
    static Formats::Dxf::DxfResolver resolver;
    TryFormat({.fileName = "main.dxf",
               .resolver = resolver,
               .open = OpenDocument<Formats::Dxf::DxfDocument>,
               .content = ReadFile,
               .mayAsk = IsFoundThere},
              input);
}

/// The input is what follows the mark of binary drawings.
void TryBinary(std::string_view input)
{
    constexpr std::string_view mark("AutoCAD Binary DXF\r\n\x1A\0", 22);
    Try(std::string(mark).append(input.substr(input.starts_with(mark) ? mark.size() : 0)));
}

const RegisteredTarget Registered("dxf", Try);
const RegisteredTarget RegisteredBinary("dxf_binary", TryBinary);

} // namespace

} // namespace Halvern::Fuzz
