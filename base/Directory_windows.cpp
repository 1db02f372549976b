// SPDX-License-Identifier: Apache-2.0

#include "base/Directory.h"

#include "base/FileStatus.h"
#include "base/WindowsApi.h"

namespace Halvern::Base {

namespace {

/// The names of a folder; the first is there at once.
class Listing
{
public:
    explicit Listing(const std::filesystem::path& folder)
        : m_handle(::FindFirstFileExW(ApiPath(folder / L"*").c_str(), FindExInfoBasic, &m_data,
                                      FindExSearchNameMatch, nullptr, FIND_FIRST_EX_LARGE_FETCH)),
          m_hasName(m_handle != INVALID_HANDLE_VALUE)
    {}
    ~Listing()
    {
        if (m_handle != INVALID_HANDLE_VALUE)
            ::FindClose(m_handle);
    }
    Listing(const Listing&) = delete;
    Listing& operator=(const Listing&) = delete;

    bool HasName() const { return m_hasName; }
    std::u16string_view Name() const { return FromWide(m_data.cFileName); }
    void Advance() { m_hasName = ::FindNextFileW(m_handle, &m_data); }

private:
    WIN32_FIND_DATAW m_data = {};
    HANDLE m_handle;
    bool m_hasName;
};

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
