#pragma once

#include <QtCore/QtGlobal>

#ifdef FILELINK_BUILD
#define FILELINK_EXPORT Q_DECL_EXPORT
#else
#define FILELINK_EXPORT Q_DECL_IMPORT
#endif
