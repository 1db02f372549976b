// SPDX-License-Identifier: Apache-2.0

#include "RealFiles.h"

namespace Halvern::Jobs {

bool RealFiles::IsAt(const QString&, const Base::FileStatus&)
{
    return true;
}

} // namespace Halvern::Jobs
