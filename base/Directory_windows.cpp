// SPDX-License-Identifier: Apache-2.0

#include "base/Directory.h"

#include "base/FileStatus.h"
#include "base/NativePath.h"
#include "base/Utf.h"
#include "base/WindowsApi.h"

namespace Halvern::Base {

namespace {

/// The names of a folder; the first is there at once.
class Listing
{
public:
    explicit Listing(const std::filesystem::path& folder)
        : m_pattern(ApiPath(folder / L"*")),
          m_handle(::FindFirstFileExW(m_pattern.c_str(), FindExInfoBasic, &m_data,
                                      FindExSearchNameMatch, nullptr, FIND_FIRST_EX_LARGE_FETCH)),
          m_error(m_handle == INVALID_HANDLE_VALUE ? ::GetLastError() : DWORD(ERROR_SUCCESS))
    {}
    ~Listing()
    {
        if (m_handle != INVALID_HANDLE_VALUE)
            ::FindClose(m_handle);
    }
    Listing(const Listing&) = delete;
    Listing& operator=(const Listing&) = delete;

    bool HasName() const { return m_error == ERROR_SUCCESS; }
    std::u16string_view Name() const { return FromWide(m_data.cFileName); }
    const WIN32_FIND_DATAW& Data() const { return m_data; }
    void Advance()
    {
        if (!::FindNextFileW(m_handle, &m_data))
            m_error = ::GetLastError();
    }
    /// Why there is no name any more. The root of an empty drive holds no file.
    FileResult Failure() const
    {
        const bool isEnd = m_error == ERROR_NO_MORE_FILES || m_error == ERROR_FILE_NOT_FOUND;
        return isEnd ? FileResult() : FileResult::Failed({}, m_error);
    }

private:
    const std::wstring m_pattern;
    WIN32_FIND_DATAW m_data = {};
    HANDLE m_handle;
    DWORD m_error;
};

EntryKind KindOf(FileKind kind)
{
    switch (kind) {
    case FileKind::Missing:
        return EntryKind::Missing;
    case FileKind::File:
        return EntryKind::File;
    case FileKind::Folder:
        return EntryKind::Folder;
    case FileKind::Other:
    case FileKind::Link:
        return EntryKind::Other;
    }
    return EntryKind::Unknown;
}

/// Below a file, too, there is nothing.
bool IsNotThere(DWORD error)
{
    return error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND ||
           error == ERROR_DIRECTORY || error == ERROR_INVALID_NAME;
}

/// For a symbolic link or a junction.
void AskWhereItLeads(FolderEntry& entry, const std::filesystem::path& path)
{
    const std::wstring native = ApiPath(path);
    const OpenFile file(native, FILE_READ_ATTRIBUTES, FILE_FLAG_BACKUP_SEMANTICS);
    if (file) {
        const FileKind kind = ReadFileStatus(reinterpret_cast<Handle>(file.Get())).kind;
        entry.kind = kind == FileKind::Folder ? EntryKind::LinkToFolder : KindOf(kind);
        return;
    }
    const DWORD error = ::GetLastError();
    const bool isDead = IsNotThere(error) || error == ERROR_CANT_RESOLVE_FILENAME;
    entry.kind = isDead ? EntryKind::LinkToNothing : EntryKind::Unknown;
    if (!isDead)
        entry.reason = FileResult::Failed({}, error);
}

FolderEntry EntryOf(const WIN32_FIND_DATAW& data, const std::filesystem::path& path)
{
    const std::u16string_view name = FromWide(data.cFileName);
    FolderEntry entry;
    entry.isText = ToUtf8(name).has_value();
    entry.name = EscapedUtf8(name);
    entry.isHidden = data.dwFileAttributes & FILE_ATTRIBUTE_HIDDEN;
    if (IsLinkOfWindows(data.dwFileAttributes, data.dwReserved0))
        AskWhereItLeads(entry, path);
    else if (data.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY)
        entry.kind = EntryKind::Folder;
    else
        entry.kind =
            data.dwFileAttributes & FILE_ATTRIBUTE_DEVICE ? EntryKind::Other : EntryKind::File;
    return entry;
}

DWORD MakeOne(const std::filesystem::path& folder)
{
    return ::CreateDirectoryW(ApiPath(folder).c_str(), nullptr) ? DWORD(ERROR_SUCCESS)
                                                                : ::GetLastError();
}

DWORD MakeAll(const std::filesystem::path& folder)
{
    DWORD failure = MakeOne(folder);
    const std::filesystem::path parent = folder.parent_path();
    if (failure == ERROR_PATH_NOT_FOUND && !parent.empty() && parent != folder) {
        failure = MakeAll(parent);
        if (failure == ERROR_SUCCESS)
            failure = MakeOne(folder);
    }
    return failure != ERROR_SUCCESS && IsFolder(folder) ? DWORD(ERROR_SUCCESS) : failure;
}

} // namespace

void VisitNames(const std::filesystem::path& folder,
                const std::function<bool(const std::string& name)>& visit)
{
    for (Listing listing(folder); listing.HasName(); listing.Advance()) {
        const std::optional<std::string> name = NameOfEntry(listing.Name());
        if (name && !visit(*name))
            return;
    }
}

FileResult VisitEntries(const std::filesystem::path& folder,
                        const std::function<bool(FolderEntry&& entry)>& visit)
{
    Listing listing(folder);
    for (; listing.HasName(); listing.Advance()) {
        const std::u16string_view name = listing.Name();
        if (name == u"." || name == u"..")
            continue;
        if (!visit(EntryOf(listing.Data(), folder / listing.Data().cFileName)))
            return {};
    }
    return listing.Failure();
}

FolderEntry ReadEntry(const std::filesystem::path& path)
{
    WIN32_FIND_DATAW data = {};
    const std::wstring native = ApiPath(path);
    const HANDLE search = ::FindFirstFileExW(native.c_str(), FindExInfoBasic, &data,
                                             FindExSearchNameMatch, nullptr, 0);
    if (search != INVALID_HANDLE_VALUE) {
        ::FindClose(search);
        return EntryOf(data, path);
    }
    const DWORD error = ::GetLastError();
    FolderEntry entry;
    entry.name = PathToUtf8(path.filename());
    entry.kind = IsNotThere(error) ? EntryKind::Missing : EntryKind::Unknown;
    if (entry.kind == EntryKind::Unknown)
        entry.reason = FileResult::Failed({}, error);
    return entry;
}

FileResult MakeFolders(const std::filesystem::path& folder)
{
    const DWORD failure = MakeAll(folder);
    return failure == ERROR_SUCCESS ? FileResult() : FileResult::Failed({}, failure);
}

void Hide(const std::filesystem::path& path)
{
    const std::wstring native = ApiPath(path);
    const DWORD attributes = ::GetFileAttributesW(native.c_str());
    if (attributes != INVALID_FILE_ATTRIBUTES)
        ::SetFileAttributesW(native.c_str(), attributes | FILE_ATTRIBUTE_HIDDEN);
}

} // namespace Halvern::Base
