// SPDX-License-Identifier: Apache-2.0

#include "base/RootedPlace_windows.h"

#include "base/NativePath.h"
#include "base/RelativeWay.h"

#include <cstddef>
#include <string_view>

namespace Halvern::Base {

namespace {

constexpr std::size_t NamesSize = std::size_t(64) * 1024;

/// Appends the names of one answer of the system.
void TakeNames(const char* answer, std::vector<std::filesystem::path>& names)
{
    for (;;) {
        const auto* entry = reinterpret_cast<const FILE_ID_BOTH_DIR_INFO*>(answer);
        const std::wstring_view name(entry->FileName, entry->FileNameLength / sizeof(wchar_t));
        if (name != L"." && name != L"..")
            names.emplace_back(name);
        if (entry->NextEntryOffset == 0)
            return;
        answer += entry->NextEntryOffset;
    }
}

} // namespace

FileResult LinkRefusal(const std::filesystem::path& link)
{
    return FileResult::Refused(FileProblem::LeadsOutside, PathToUtf8(link) + " is a link");
}

FileResult Place::Failure() const
{
    return LastFailure(PathToUtf8(relative));
}

bool Place::Open(DWORD access, DWORD share, NtFile& opened) const
{
    return name.empty() ? OpenAgain(Folder(), opened)
                        : OpenIn(Folder(), name, access, share, opened);
}

FileResult EnterFolder(Way& way, const std::wstring& name, const std::filesystem::path& relative)
{
    NtFile opened;
    // With less access than this the system would not look at what is shared.
    if (!OpenIn(way.Last(), name, FILE_LIST_DIRECTORY, KeptInPlace, opened))
        return LastFailure(PathToUtf8(relative));
    switch (EntryStatus(way.Last(), name, opened.Get()).kind) {
    case FileKind::Link:
        return LinkRefusal(relative);
    case FileKind::Folder:
        way.folders.push_back(std::move(opened));
        return {};
    case FileKind::Missing:
    case FileKind::File:
    case FileKind::Other:
        break;
    }
    return FileResult::Failed(PathToUtf8(relative), ERROR_DIRECTORY);
}

FileResult OpenFolderBelow(HANDLE root, const std::vector<std::filesystem::path>& names, Way& way)
{
    way = Way();
    way.root = root;
    std::filesystem::path relative;
    for (const std::filesystem::path& name : names) {
        relative /= name;
        if (FileResult entered = EnterFolder(way, name.native(), relative); !entered)
            return entered;
    }
    return {};
}

FileResult FindPlace(HANDLE root, const std::filesystem::path& relative, Place& place)
{
    std::vector<std::filesystem::path> names;
    if (FileResult taken = NamesOnWay(relative, names); !taken)
        return taken;
    place.relative = relative;
    if (!names.empty()) {
        place.name = names.back().native();
        names.pop_back();
    }
    return OpenFolderBelow(root, names, place.way);
}

FileResult FindEntry(HANDLE root, const std::filesystem::path& relative, Place& place)
{
    FileResult found = FindPlace(root, relative, place);
    if (found && place.name.empty())
        return FileResult::Refused(FileProblem::LeadsOutside, "the folder itself");
    return found;
}

bool ReadStatus(const Place& place, FileStatus& status)
{
    if (place.name.empty()) {
        status = ReadFileStatus(reinterpret_cast<Handle>(place.Folder()));
        return true;
    }
    NtFile opened;
    if (!OpenIn(place.Folder(), place.name, FILE_READ_ATTRIBUTES, SharedByAll, opened))
        return false;
    status = EntryStatus(place.Folder(), place.name, opened.Get());
    return true;
}

FileResult ReadNames(HANDLE folder, std::vector<std::filesystem::path>& names)
{
    names.clear();
    NtFile opened;
    if (!OpenAgain(folder, opened))
        return LastFailure();
    // Of the type for its alignment.
    std::vector<FILE_ID_BOTH_DIR_INFO> answer(NamesSize / sizeof(FILE_ID_BOTH_DIR_INFO));
    const auto size = static_cast<DWORD>(answer.size() * sizeof(FILE_ID_BOTH_DIR_INFO));
    while (
        ::GetFileInformationByHandleEx(opened.Get(), FileIdBothDirectoryInfo, answer.data(), size))
        TakeNames(reinterpret_cast<const char*>(answer.data()), names);
    return ::GetLastError() == ERROR_NO_MORE_FILES ? FileResult() : LastFailure();
}

} // namespace Halvern::Base
