// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <istream>
#include <string>
#include <string_view>
#include <vector>

namespace Halvern::Base {

/// The home folders of root and of people in a list of accounts such as /etc/passwd, but for the
/// user with the number `except`. Accounts of services have small numbers, or cannot log in.
///
/// For a list that is read as it stands: getpwent may ask a directory for every account of a
/// company.
std::vector<std::string> HomesOfPeople(std::istream& accounts, std::string_view except);

} // namespace Halvern::Base
