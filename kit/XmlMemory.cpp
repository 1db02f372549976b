// SPDX-License-Identifier: Apache-2.0

#include "kit/XmlMemory.h"

#include <cstddef>
#include <cstdlib>

namespace Halvern::PluginKit {

namespace {

constexpr std::size_t MiB = std::size_t(1) << 20;
constexpr std::size_t MinLargeBlock = 64 * 1024;
constexpr std::size_t MaxInSmall = 64 * MiB;
/// The parser copies the document, and then the attributes of a tag, into blocks that it doubles.
constexpr std::size_t LargePerByte = 4;

/// Stands before each block.
struct alignas(std::max_align_t) Header
{
    std::size_t size;
};

Header* HeaderOf(void* memory)
{
    return static_cast<Header*>(memory) - 1;
}

// The parser tells its functions for memory nothing but sizes.
thread_local XmlMemory* Current = nullptr;

} // namespace

XmlMemory::XmlMemory(std::size_t documentSize)
    : m_leftInSmall(MaxInSmall), m_leftInLarge(LargePerByte * documentSize + 64 * MiB),
      m_outer(Current)
{
    Current = this;
}

XmlMemory::~XmlMemory()
{
    Current = m_outer;
}

XML_Memory_Handling_Suite XmlMemory::Functions()
{
    return {Allocate, Resize, Free};
}

std::size_t& XmlMemory::LeftFor(std::size_t size)
{
    return size < MinLargeBlock ? m_leftInSmall : m_leftInLarge;
}

bool XmlMemory::Take(std::size_t size)
{
    std::size_t& left = LeftFor(size);
    const std::size_t needed = size + sizeof(Header);
    if (needed < size || needed > left) {
        m_isExhausted = true;
        return false;
    }
    left -= needed;
    return true;
}

void XmlMemory::Return(std::size_t size)
{
    LeftFor(size) += size + sizeof(Header);
}

void* XmlMemory::Allocate(std::size_t size)
{
    return Resize(nullptr, size);
}

void* XmlMemory::Resize(void* memory, std::size_t size)
{
    Header* const old = memory ? HeaderOf(memory) : nullptr;
    const std::size_t oldSize = old ? old->size : 0;
    if (old)
        Current->Return(oldSize);
    const bool isAllowed = Current->Take(size);
    void* const block = isAllowed ? std::realloc(old, size + sizeof(Header)) : nullptr;
    if (!block) {
        if (isAllowed)
            Current->Return(size);
        if (old)
            Current->Take(oldSize);
        return nullptr;
    }
    auto* const header = static_cast<Header*>(block);
    header->size = size;
    return header + 1;
}

void XmlMemory::Free(void* memory)
{
    if (!memory)
        return;
    Header* const header = HeaderOf(memory);
    Current->Return(header->size);
    std::free(header);
}

} // namespace Halvern::PluginKit
