// SPDX-License-Identifier: Apache-2.0

#include "base/Accounts.h"

#include <gtest/gtest.h>

#include <sstream>

using namespace Halvern;

namespace {

std::vector<std::string> Homes(const std::string& accounts, std::string_view except = "1000")
{
    std::istringstream list(accounts);
    return Base::HomesOfPeople(list, except);
}

using List = std::vector<std::string>;

} // namespace

TEST(Accounts, AreThoseOfOthersWhoCanLogIn)
{
    EXPECT_EQ(Homes("root:x:0:0:root:/root:/bin/bash\n"
                    "postgres:x:104:110:,,,:/var/lib/postgresql:/bin/bash\n"
                    "nobody:x:65534:65534::/nonexistent:/bin/sh\n"
                    "ann:x:1000:1000:Ann:/home/ann:/bin/bash\n"
                    "bob:x:1001:1001:Bob, B.:/home/bob:/bin/zsh\n"
                    "ci:x:1002:1002::/srv/ci:/usr/sbin/nologin\n"
                    "mail:x:1003:1003::/data/mail:/bin/false\n"
                    "eve:x:123456:1::/net/homes/eve:\n"),
              (List{"/root", "/home/bob", "/net/homes/eve"}));
    EXPECT_EQ(Homes("root:x:0:0::/root:/bin/sh\nann:x:1000:1000::/home/ann:/bin/sh\n", "0"),
              List{"/home/ann"});
}

TEST(Accounts, ThatAreNoneAreLeftOut)
{
    EXPECT_EQ(Homes(""), List());
    EXPECT_EQ(Homes("\n+::::::\n# comment\nbob:x:1001\neve:x:1002:1002:::/bin/sh\n:::::::::"),
              List());
}
