// SPDX-License-Identifier: Apache-2.0

#include "pluginkit/LinkArray.h"

#include "pluginkit/FormatError.h"

#include <algorithm>
#include <limits>
#include <stdexcept>
#include <utility>

namespace Halvern::PluginKit {

namespace {

using SyncPlugin::FileLinkInfo;
using SyncPlugin::MaxLinkText;
using SyncPlugin::WideChar;

void Fill(WideChar (&field)[MaxLinkText], const WideString& text)
{
    *std::copy(text.begin(), text.end(), field) = 0;
}

[[noreturn]] void Refuse(const char* what, std::string_view referenceId, const std::string& reason)
{
    throw FormatError("the " + std::string(what) + " of link " + std::string(referenceId) + reason);
}

} // namespace

WideString LinkUnits(const char* what, std::string_view referenceId, std::string_view text)
{
    std::optional<WideString> units = ToUtf16(text);
    if (!units)
        Refuse(what, referenceId, " is no valid text");
    if (units->find(WideChar(0)) != WideString::npos)
        Refuse(what, referenceId, " holds a NUL character");
    if (units->size() > MaxLinkUnits)
        Refuse(what, referenceId,
               " has " + std::to_string(units->size()) + " characters; a link can have " +
                   std::to_string(MaxLinkUnits));
    return std::move(*units);
}

std::optional<std::string> LinkText(const WideChar (&field)[MaxLinkText])
{
    return ToUtf8(WideView(field, std::find(field, field + MaxLinkText, WideChar(0))));
}

LinkArray::LinkArray(std::size_t capacity) : m_capacity(capacity)
{
    if (capacity > static_cast<std::size_t>(std::numeric_limits<int>::max()))
        throw FormatError("the file has too many links");
    if (capacity > 0)
        m_links = std::make_unique<FileLinkInfo[]>(capacity);
}

void LinkArray::Add(const std::string& referenceId, std::string_view path)
{
    if (m_count == m_capacity)
        throw std::length_error("more links than announced");
    const WideString id = LinkUnits("id", referenceId, referenceId);
    const WideString target = LinkUnits("path", referenceId, path);
    FileLinkInfo& link = m_links[m_count++];
    link.size = sizeof(FileLinkInfo);
    Fill(link.referenceId, id);
    Fill(link.path, target);
}

void LinkArray::HandOver(FileLinkInfo** links, int* count)
{
    *count = static_cast<int>(m_count);
    *links = m_links.release();
    m_capacity = m_count = 0;
}

} // namespace Halvern::PluginKit
