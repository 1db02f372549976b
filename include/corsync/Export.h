// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QtGlobal>

#ifdef _MSC_VER
#error "Visual C++ lays objects out differently: use the mingw-w64 GCC, see docs/embedding.md"
#endif

#ifdef CORSYNCJOBS_BUILD
#define CORSYNCJOBS_EXPORT Q_DECL_EXPORT
#else
#define CORSYNCJOBS_EXPORT Q_DECL_IMPORT
#endif
