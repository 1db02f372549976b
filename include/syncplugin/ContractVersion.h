// SPDX-License-Identifier: Apache-2.0

#pragma once

#include "syncplugin/FileLinkInfo.h"

#include <cstddef>
#include <cstdint>

namespace Halvern::SyncPlugin {

/// The version of the contract in these headers. It grows with every change that an existing
/// library would not survive. A library that states no version is taken for version 1.
inline constexpr std::uint16_t ContractVersion = 1;

/// How the compiler lays out objects and calls virtual functions.
enum class ObjectLayout : std::uint8_t
{
    Itanium = 1, ///< GCC, and Clang as it is on Linux and with mingw-w64
    Microsoft = 2,
};

/// Whose `delete[]` frees what this library's `new[]` made.
enum class RuntimeLibrary : std::uint8_t
{
    LibStdCpp = 1,
    LibCpp = 2,
    Microsoft = 3,
    LibStdCppOnUcrt = 4, ///< mingw-w64 with the universal C runtime, which has a heap of its own
    LibCppOnUcrt = 5,
};

/// What a library was built with, in one number: objects of two libraries fit when their numbers
/// are equal. DO NOT CHANGE THE PLACES OR THE VALUES: hosts read numbers of libraries of every
/// version.
///
///     bits 48 to 63   0x5350: the number is one of these
///     bits 32 to 47   ContractVersion
///     bits 16 to 31   sizeof(FileLinkInfo)
///     bits  8 to 15   sizeof(WideChar)
///     bits  4 to  7   RuntimeLibrary
///     bits  0 to  3   ObjectLayout
inline constexpr std::uint16_t ContractStampMark = 0x5350;

struct ContractTerms
{
    std::uint16_t version;
    std::uint16_t recordSize;
    std::uint8_t characterSize;
    RuntimeLibrary runtime;
    ObjectLayout layout;
};

constexpr std::uint64_t MakeContractStamp(const ContractTerms& terms)
{
    return std::uint64_t(ContractStampMark) << 48 | std::uint64_t(terms.version) << 32 |
           std::uint64_t(terms.recordSize) << 16 | std::uint64_t(terms.characterSize) << 8 |
           std::uint64_t(terms.runtime) << 4 | std::uint64_t(terms.layout);
}

// Where a pointer to a member function has two parts, tables of virtual functions are those of GCC.
inline constexpr ObjectLayout OwnObjectLayout = sizeof(void(FileLinkInfo::*)()) == 2 * sizeof(void*)
                                                    ? ObjectLayout::Itanium
                                                    : ObjectLayout::Microsoft;

#if defined(_MSVC_STL_VERSION)
inline constexpr RuntimeLibrary OwnRuntimeLibrary = RuntimeLibrary::Microsoft;
#elif defined(_LIBCPP_VERSION) && defined(_UCRT)
inline constexpr RuntimeLibrary OwnRuntimeLibrary = RuntimeLibrary::LibCppOnUcrt;
#elif defined(_LIBCPP_VERSION)
inline constexpr RuntimeLibrary OwnRuntimeLibrary = RuntimeLibrary::LibCpp;
#elif defined(_UCRT)
inline constexpr RuntimeLibrary OwnRuntimeLibrary = RuntimeLibrary::LibStdCppOnUcrt;
#else
inline constexpr RuntimeLibrary OwnRuntimeLibrary = RuntimeLibrary::LibStdCpp;
#endif

/// What this library is built with.
inline constexpr ContractTerms OwnContractTerms = {
    ContractVersion, sizeof(FileLinkInfo), sizeof(WideChar), OwnRuntimeLibrary, OwnObjectLayout};

static_assert(MakeContractStamp({1, 1044, 2, RuntimeLibrary::LibStdCpp, ObjectLayout::Itanium}) ==
              0x5350'0001'0414'0211);

} // namespace Halvern::SyncPlugin
