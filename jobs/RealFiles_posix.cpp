// SPDX-License-Identifier: Apache-2.0

#include "RealFiles.h"

#include "Paths.h"

namespace Halvern::Jobs {

bool RealFiles::IsAt(const QString& real, const Base::FileStatus& status)
{
    if (!m_root.IsOpen() && !m_root.Open("/"))
        return false;
    Base::FileStatus there;
    return m_root.Status(Native(real).relative_path(), there) && there.device == status.device &&
           there.index == status.index;
}

} // namespace Halvern::Jobs
