// SPDX-License-Identifier: Apache-2.0

#include "OrdinaryRights.h"

#include <stdexcept>

#include <linux/capability.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace Halvern::Test {

namespace {

constexpr quint32 FileRights = 1u << CAP_DAC_OVERRIDE | 1u << CAP_DAC_READ_SEARCH;

struct Capabilities
{
    __user_cap_header_struct header = {_LINUX_CAPABILITY_VERSION_3, 0};
    __user_cap_data_struct data[2] = {};

    Capabilities()
    {
        if (::syscall(SYS_capget, &header, data) != 0)
            throw std::runtime_error("capget");
    }
    void Set()
    {
        if (::syscall(SYS_capset, &header, data) != 0)
            throw std::runtime_error("capset");
    }
};

} // namespace

OrdinaryRights::OrdinaryRights()
{
    Capabilities capabilities;
    m_taken = capabilities.data[0].effective & FileRights;
    capabilities.data[0].effective &= ~FileRights;
    capabilities.Set();
}

OrdinaryRights::~OrdinaryRights()
{
    Capabilities capabilities;
    capabilities.data[0].effective |= m_taken;
    capabilities.Set();
}

} // namespace Halvern::Test
