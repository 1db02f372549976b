// SPDX-License-Identifier: Apache-2.0

#include "base/Accounts.h"

#include <algorithm>
#include <array>

namespace Halvern::Base {

namespace {

/// A line: name, password, number of the user, of the group, comment, home, shell.
class Account
{
public:
    explicit Account(std::string_view line)
    {
        for (std::string_view& field : m_fields) {
            const std::size_t end = std::min(line.find(':'), line.size());
            field = line.substr(0, end);
            line.remove_prefix(std::min(end + 1, line.size()));
        }
    }

    std::string_view User() const { return m_fields[2]; }
    std::string_view Home() const { return m_fields[5]; }

    bool IsPerson() const
    {
        // 1000 and more; 65534 is nobody.
        const bool hasNumberOfPerson = User().size() >= 4 && User() != "65534";
        const bool canLogIn = !Shell().ends_with("/nologin") && !Shell().ends_with("/false");
        return User() == "0" || (hasNumberOfPerson && canLogIn);
    }

private:
    std::string_view Shell() const { return m_fields[6]; }

    std::array<std::string_view, 7> m_fields;
};

} // namespace

std::vector<std::string> HomesOfPeople(std::istream& accounts, std::string_view except)
{
    std::vector<std::string> homes;
    for (std::string line; std::getline(accounts, line);) {
        const Account account(line);
        if (account.IsPerson() && account.User() != except && !account.Home().empty())
            homes.emplace_back(account.Home());
    }
    return homes;
}

} // namespace Halvern::Base
