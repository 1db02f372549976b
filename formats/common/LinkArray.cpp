#include "LinkArray.h"

#include "FormatError.h"

#include <algorithm>
#include <limits>
#include <stdexcept>

namespace Halvern::Formats {

namespace {

using SyncPlugin::FileLinkInfo;
using SyncPlugin::MaxLinkText;
using SyncPlugin::WideChar;

void Fill(WideChar (&field)[MaxLinkText], std::string_view text)
{
    const WideString wide = ToUtf16Lossy(text);
    *std::copy(wide.begin(), wide.end(), field) = 0;
}

} // namespace

void RequireLinkText(const std::string& what, std::string_view text)
{
    if (!IsUtf8(text))
        throw FormatError(what + " is no valid text");
    if (text.find('\0') != std::string_view::npos)
        throw FormatError(what + " holds a NUL character");
    const std::size_t units = Utf16Length(text);
    if (units > MaxLinkUnits)
        throw FormatError(what + " has " + std::to_string(units) + " characters; a link can have " +
                          std::to_string(MaxLinkUnits));
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
    RequireLinkText("the id of link " + referenceId, referenceId);
    RequireLinkText("the path of link " + referenceId, path);
    FileLinkInfo& link = m_links[m_count++];
    link.size = sizeof(FileLinkInfo);
    Fill(link.referenceId, referenceId);
    Fill(link.path, path);
}

void LinkArray::HandOver(FileLinkInfo** links, int* count)
{
    *count = static_cast<int>(m_count);
    *links = m_links.release();
    m_capacity = m_count = 0;
}

} // namespace Halvern::Formats
