// SPDX-License-Identifier: Apache-2.0

#include "base/Directory.h"

#include <system_error>

namespace Halvern::Base {

void VisitNames(const std::filesystem::path& folder,
                const std::function<bool(const std::string& name)>& visit)
{
    std::error_code error;
    std::filesystem::directory_iterator entries(folder, error);
    for (; !error && entries != std::filesystem::directory_iterator(); entries.increment(error)) {
        if (!visit(entries->path().filename().native()))
            return;
    }
}

FileResult MakeFolders(const std::filesystem::path& folder)
{
    std::error_code error;
    std::filesystem::create_directories(folder, error);
    // An existing file of that name is no error to create_directories on every library version.
    std::error_code ignored;
    if (!error && !std::filesystem::is_directory(folder, ignored))
        error = std::make_error_code(std::errc::not_a_directory);
    return error ? FileResult::Failed({}, static_cast<std::uint32_t>(error.value())) : FileResult();
}

void Hide(const std::filesystem::path&) {}

} // namespace Halvern::Base
