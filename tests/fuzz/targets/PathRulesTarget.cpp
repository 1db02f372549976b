// SPDX-License-Identifier: Apache-2.0

#include "Target.h"

#include "base/CaseFolding.h"
#include "base/ContentHash.h"
#include "base/NativePath.h"
#include "base/PathText.h"
#include "base/RelativeWay.h"
#include "base/SamePath.h"
#include "base/Utf.h"
#include "base/WindowsApiPath.h"
#include "base/WindowsNames.h"
#include "pluginkit/FileUri.h"

#include <algorithm>

namespace Halvern::Fuzz {

namespace {

using namespace Base;

constexpr System Systems[] = {System::Posix, System::Windows};

void TryUtf(std::string_view bytes)
{
    const std::optional<std::u16string> units = ToUtf16(bytes);
    Require(units.has_value() == IsUtf8(bytes), "two answers to what is UTF-8");
    if (units)
        Require(ToUtf8(*units) == bytes, "UTF-8 does not come back");
    Require(ToUtf8(ToUtf16Lossy(bytes)).has_value(), "a lone surrogate from bytes");
    Require(IsUtf8(EscapedUtf8(bytes)), "no UTF-8 for people");
}

void TryUtf(std::u16string_view text)
{
    const std::optional<std::string> bytes = ToUtf8(text);
    if (bytes)
        Require(ToUtf16(*bytes) == text, "UTF-16 does not come back");
    Require(IsUtf8(ToUtf8Lossy(text)) && IsUtf8(EscapedUtf8(text)), "no UTF-8 of UTF-16");
}

void TryLetterCase(std::u16string_view a, std::u16string_view b)
{
    const std::u16string folded = FoldCase(a);
    Require(folded.size() == a.size() && FoldCase(folded) == folded, "folding twice is not once");
    Require(IsEqualIgnoringCase(a, b) == (folded == FoldCase(b)), "two answers to letter case");
    Require(StartsWithIgnoringCase(a, b) == folded.starts_with(FoldCase(b)),
            "two answers to a beginning");
    for (const System system : Systems)
        if (IsSamePath(a, b, system))
            Require(SamePathKey(a, system) == SamePathKey(b, system), "one path, two keys");
}

void TryBelow(std::u16string_view folder, std::u16string_view path)
{
    const auto below = PathBelow(folder, path);
    if (!below)
        return;
    Require(path.ends_with(*below) && folder.size() + below->size() <= path.size(),
            "what is below is no piece of the path");
    if (!below->starts_with(u'/'))
        Require(IsEqualIgnoringCase(JoinPath(folder, *below), path) || below->empty(),
                "joined again, it is another path");
}

void TryParents(std::u16string_view path)
{
    for (std::u16string_view parent = ParentPath(path); !parent.empty();
         parent = ParentPath(path)) {
        Require(parent.size() < path.size() && path.starts_with(parent), "no folder above");
        path = parent;
    }
}

void TryKinds(std::u16string_view path)
{
    if (IsUrlLike(path))
        Require(!IsLocalPath(path, System::Posix) && !IsLocalPath(path, System::Windows),
                "an address and a file");
    for (const System system : Systems) {
        if (!IsAbsolutePath(path, system))
            Require(IsLocalPath(path, system) && !HasDrive(path) && !NamesServer(path),
                    "relative and not");
        const std::u16string_view forbidden = ForbiddenName(path, system);
        Require(path.find(forbidden) != std::u16string_view::npos, "a name from elsewhere");
        Require(system == System::Windows || forbidden.empty(), "a name that POSIX forbids");
    }
    if (IsShareRoot(path))
        Require(IsUncPath(path), "a share without a server");
    if (NamesDevice(path))
        Require(IsUncPath(path), "a device without slashes");
}

/// Never out of a folder.
void TryWay(std::string_view relative)
{
    std::vector<std::filesystem::path> names;
    if (!NamesOnWay(NativePath(relative), names))
        return;
    std::filesystem::path way;
    for (const std::filesystem::path& name : names) {
        Require(!name.empty() && name != "." && name != ".." && !name.has_parent_path() &&
                    !name.has_root_path(),
                "no name on the way");
        way /= name;
    }
    Require(!way.has_root_path() && way == way.lexically_normal(), "a way out");
}

void TryWindowsPath(std::u16string_view path)
{
    if (!HasDrive(path) || path.size() < 3 || path[2] != u'/' ||
        path.find(u'\\') != std::u16string_view::npos)
        return;
    std::u16string back = WithoutApiPrefix(WindowsApiPath(path));
    std::replace(back.begin(), back.end(), u'\\', u'/');
    Require(back == path, "a path of Windows does not come back");
}

void TryUri(const std::string& path)
{
    if (path.empty() || path.find_first_of(":\\") != std::string::npos || !IsUtf8(path) ||
        path.find('\0') != std::string::npos)
        return;
    const std::string uri = PluginKit::UriOfPath(path);
    if (path.starts_with("//"))
        return;
    Require(PluginKit::IsLinkUri(uri), "no uri for " + path);
    Require(PluginKit::PathOfUri(uri, "/nowhere") == path, "a path does not come back: " + uri);
}

void TryHash(std::string_view text)
{
    if (const std::optional<ContentHash> hash = ContentHash::FromHex(text))
        Require(hash->Hex() == text, "a hash does not come back");
}

/// Two texts, with a zero between them.
void Try(std::string_view input)
{
    const std::size_t zero = std::min(input.find('\0'), input.size());
    const std::string_view first = input.substr(0, zero);
    const std::string_view second = input.substr(std::min(zero + 1, input.size()));
    std::u16string units(input.size() / 2, u'\0');
    std::copy_n(input.data(), units.size() * 2, reinterpret_cast<char*>(units.data()));
    TryUtf(input);
    TryUtf(units);
    const std::u16string a = ToUtf16Lossy(first);
    const std::u16string b = ToUtf16Lossy(second);
    TryLetterCase(a, b);
    TryLetterCase(units, a);
    TryBelow(b, a);
    TryParents(a);
    TryKinds(a);
    TryKinds(units);
    TryWay(first);
    TryWindowsPath(a);
    TryUri(std::string(first));
    TryHash(first);
}

const RegisteredTarget Registered("path_rules", Try);

} // namespace

} // namespace Halvern::Fuzz
