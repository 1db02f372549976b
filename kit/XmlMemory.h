// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstddef>

#include <expat.h>

namespace Halvern::PluginKit {

/// The memory that the XML parser may take for one document. The parser keeps much more for a name,
/// an attribute or an entity than it has bytes, and a small packed file can hold millions of them.
///
/// While the object is there, the parsers of its thread take their memory from it; it has to
/// outlive those that it was made for.
class XmlMemory
{
public:
    explicit XmlMemory(std::size_t documentSize);
    ~XmlMemory();
    XmlMemory(const XmlMemory&) = delete;
    XmlMemory& operator=(const XmlMemory&) = delete;

    /// What a parser has to be made with.
    static XML_Memory_Handling_Suite Functions();

    /// True when a parser has failed for want of memory that it may not have.
    bool IsExhausted() const { return m_isExhausted; }

private:
    static void* Allocate(std::size_t size);
    static void* Resize(void* memory, std::size_t size);
    static void Free(void* memory);
    bool Take(std::size_t size);
    void Return(std::size_t size);
    std::size_t& LeftFor(std::size_t size);

    /// In blocks for things of which there can be many.
    std::size_t m_leftInSmall;
    /// In blocks that hold parts of the document.
    std::size_t m_leftInLarge;
    bool m_isExhausted = false;
    XmlMemory* const m_outer;
};

} // namespace Halvern::PluginKit
