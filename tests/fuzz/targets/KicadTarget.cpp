// SPDX-License-Identifier: Apache-2.0

#include "FormatTrial.h"
#include "Scratch.h"
#include "Target.h"

#include "kicad/KicadDocument.h"
#include "kicad/KicadResolver.h"

namespace Halvern::Fuzz {

namespace {

/// Libraries that are not where a project says are looked for in other folders of it: a layout puts
/// them where it says. Data sheets are links below the project alone; an absolute path is written,
/// and is none.
bool IsLinkAfterwards(const Link& link, const std::string& path)
{
    std::error_code ignored;
    if (link.id.find("LibName") != std::string::npos && path.ends_with("own.lib"))
        return std::filesystem::exists(ScratchFolder() / path, ignored);
    return !path.starts_with('/') || !link.id.ends_with("datasheet");
}

void Try(const char* fileName, std::string_view input)
{
    static Formats::Kicad::KicadResolver resolver;
    TryFormat({.fileName = fileName,
               .resolver = resolver,
               .open = OpenDocument<Formats::Kicad::KicadDocument>,
               .content = ReadFile,
               .mayAsk = IsLinkAfterwards},
              input);
}

/// The beginning says what the file is.
void TryLists(std::string_view input)
{
    if (input.starts_with("(kicad_pcb"))
        return Try("main.kicad_pcb", input);
    if (input.starts_with("(footprint") || input.starts_with("(module"))
        return Try("own.pretty/main.kicad_mod", input);
    Try("main.kicad_sch", input);
}

void TryProject(std::string_view input)
{
    Try("main.kicad_pro", input);
}

void TryLegacy(std::string_view input)
{
    Try(input.starts_with("EESchema") ? "main.sch" : "main.pro", input);
}

void TrySpice(std::string_view input)
{
    Try("main.cir", input);
}

const RegisteredTarget RegisteredLists("kicad", TryLists);
const RegisteredTarget RegisteredProject("kicad_project", TryProject);
const RegisteredTarget RegisteredLegacy("kicad_legacy", TryLegacy);
const RegisteredTarget RegisteredSpice("spice", TrySpice);

} // namespace

} // namespace Halvern::Fuzz
