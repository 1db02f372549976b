// SPDX-License-Identifier: Apache-2.0

#include "ProjectFile.h"
#include "SExpressions.h"
#include "StoredPath.h"

#include "KitNames.h"
#include "pluginkit/FormatError.h"

namespace Halvern::Formats::Kicad {

namespace {

constexpr std::string_view LibraryExtension = ".lib";

std::string Escaped(std::string_view text)
{
    std::string escaped;
    for (const char c : text) {
        if (c == '"' || c == '\\')
            escaped += '\\';
        escaped += c;
    }
    return escaped;
}

/// A path of the simulator has no escapes.
std::string DirectiveString(std::string_view text)
{
    constexpr std::string_view project = "${KIPRJMOD}/";
    const std::string_view name =
        text.substr(text.starts_with(project) ? project.size() : std::size_t(0));
    if (text.starts_with('~') || name.find('$') != std::string_view::npos)
        throw FormatError("the simulator would look elsewhere for " + std::string(text));
    for (const char quote : {'"', '\''})
        if (text.find(quote) == std::string_view::npos)
            return quote + std::string(text) + quote;
    throw FormatError("the simulator cannot read both kinds of quotation marks in one path: " +
                      std::string(text));
}

/// Within a string of a list, without its quotation marks.
std::string InList(std::string_view text)
{
    const std::string quoted = Quoted(text);
    return quoted.substr(1, quoted.size() - 2);
}

std::string LibraryName(std::string_view text)
{
    if (!text.ends_with(LibraryExtension))
        throw FormatError("a library of symbols has to be named *.lib: " + std::string(text));
    const std::string name(text.substr(0, text.size() - LibraryExtension.size()));
    // A mere name may be that of an installed library.
    return name.find('/') == std::string::npos ? "./" + name : name;
}

} // namespace

std::string Written(Notation notation, std::string_view text)
{
    if (notation != Notation::List && notation != Notation::Json &&
        text.find_first_of("\r\n") != std::string_view::npos)
        throw FormatError("a path in a line of text cannot hold a line end: " + std::string(text));
    switch (notation) {
    case Notation::List:
        return Quoted(text);
    case Notation::Json:
        return JsonString(text);
    case Notation::Quoted:
        return '"' + Escaped(text) + '"';
    case Notation::Directive:
        return DirectiveString(text);
    case Notation::ListDirective:
        return InList(DirectiveString(text));
    case Notation::Setting:
        return Escaped(text);
    case Notation::Library:
        return LibraryName(text);
    }
    return {};
}

} // namespace Halvern::Formats::Kicad
