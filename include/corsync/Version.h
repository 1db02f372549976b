// SPDX-License-Identifier: Apache-2.0

#pragma once

// One set of macros serves all libraries: they are released together.
#include "syncservices/Version.h"
