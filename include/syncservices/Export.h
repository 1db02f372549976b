// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QtGlobal>

#ifdef _MSC_VER
#error "Visual C++ lays objects out differently: use the mingw-w64 GCC, see docs/embedding.md"
#endif

#ifdef SYNCSERVICES_BUILD
#define SYNCSERVICES_EXPORT Q_DECL_EXPORT
#else
#define SYNCSERVICES_EXPORT Q_DECL_IMPORT
#endif

/// Bit operators for an unscoped enumeration with a fixed underlying type, so that combinations
/// keep the enumeration's type.
#define SYNCSERVICES_BIT_OPERATORS(Enum)                                                           \
    constexpr Enum operator|(Enum a, Enum b)                                                       \
    {                                                                                              \
        return static_cast<Enum>(static_cast<quint32>(a) | static_cast<quint32>(b));               \
    }                                                                                              \
    constexpr Enum operator&(Enum a, Enum b)                                                       \
    {                                                                                              \
        return static_cast<Enum>(static_cast<quint32>(a) & static_cast<quint32>(b));               \
    }                                                                                              \
    constexpr Enum operator~(Enum a)                                                               \
    {                                                                                              \
        return static_cast<Enum>(~static_cast<quint32>(a));                                        \
    }                                                                                              \
    constexpr Enum& operator|=(Enum& a, Enum b)                                                    \
    {                                                                                              \
        return a = a | b;                                                                          \
    }                                                                                              \
    constexpr Enum& operator&=(Enum& a, Enum b)                                                    \
    {                                                                                              \
        return a = a & b;                                                                          \
    }
