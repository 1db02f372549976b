#include "FolderNames.h"

#include "common/FormatError.h"
#include "common/Utf.h"

#include <algorithm>
#include <system_error>

namespace Halvern::Formats::Blender {

namespace {

constexpr std::size_t MaxNames = 1'000'000;

std::string NameOf(const std::filesystem::path& file)
{
    const std::u8string name = file.filename().u8string();
    return std::string(name.begin(), name.end());
}

} // namespace

const std::vector<std::string>& FolderNames::NamesIn(const std::string& folder)
{
    const auto [known, isNew] = m_names.try_emplace(folder);
    std::vector<std::string>& names = known->second;
    if (!isNew)
        return names;
    std::error_code error;
    std::filesystem::directory_iterator files(m_base / PathFromUtf8(folder), error);
    for (; !error && files != std::filesystem::directory_iterator(); files.increment(error)) {
        names.push_back(NameOf(files->path()));
        if (++m_count > MaxNames)
            throw FormatError("sequences in folders of more than " + std::to_string(MaxNames) +
                              " files");
    }
    std::sort(names.begin(), names.end());
    return names;
}

std::vector<std::string> FolderNames::NamesWith(const std::string& folder,
                                                std::string_view beginning)
{
    const std::vector<std::string>& names = NamesIn(folder);
    const auto first = std::lower_bound(names.begin(), names.end(), beginning);
    const auto last = std::find_if(
        first, names.end(), [&](const std::string& name) { return !name.starts_with(beginning); });
    return {first, last};
}

} // namespace Halvern::Formats::Blender
