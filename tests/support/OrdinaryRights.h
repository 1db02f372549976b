// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <QtCore/QtGlobal>

namespace Halvern::Test {

/// While it lives, file permissions hold for this process even when it runs as root.
class OrdinaryRights
{
public:
    OrdinaryRights();
    ~OrdinaryRights();
    OrdinaryRights(const OrdinaryRights&) = delete;
    OrdinaryRights& operator=(const OrdinaryRights&) = delete;

private:
    quint32 m_taken = 0;
};

} // namespace Halvern::Test
