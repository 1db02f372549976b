// SPDX-License-Identifier: Apache-2.0

#include "base/NtFile_windows.h"

#include <cstddef>
#include <cstring>
#include <vector>

#include <winternl.h>

namespace Halvern::Base {

namespace {

// The headers have these for newer targets only.
constexpr auto RenameInfoEx = static_cast<FILE_INFORMATION_CLASS>(65);
constexpr DWORD ReplaceIfExists = 1;
constexpr DWORD PosixRename = 2;

/// As FILE_RENAME_INFORMATION(_EX): the first member is a BOOLEAN or flags.
struct RenameHead
{
    DWORD flags;
    HANDLE folder;
    ULONG size;
    WCHAR name[1];
};

bool Succeeded(NTSTATUS status)
{
    if (NT_SUCCESS(status))
        return true;
    ::SetLastError(::RtlNtStatusToDosError(status));
    return false;
}

/// A name in a folder, as these calls take it; both must outlive it.
class NameIn
{
public:
    NameIn(HANDLE folder, const std::wstring& name)
    {
        m_text.Buffer = const_cast<PWSTR>(name.data());
        m_text.Length = static_cast<USHORT>(name.size() * sizeof(wchar_t));
        m_text.MaximumLength = m_text.Length;
        InitializeObjectAttributes(&m_attributes, &m_text, OBJ_CASE_INSENSITIVE, folder, nullptr);
    }
    POBJECT_ATTRIBUTES Get() { return &m_attributes; }

private:
    UNICODE_STRING m_text = {};
    OBJECT_ATTRIBUTES m_attributes = {};
};

/// Nobody has longer ones; Wine answers that there is no such file.
bool IsNameLength(const std::wstring& name)
{
    const bool fits = name.size() <= 255;
    if (!fits)
        ::SetLastError(ERROR_FILENAME_EXCED_RANGE);
    return fits;
}

bool Create(NameIn name, DWORD access, DWORD attributes, DWORD share, DWORD disposition,
            DWORD options, NtFile& opened)
{
    HANDLE handle = INVALID_HANDLE_VALUE;
    IO_STATUS_BLOCK io = {};
    const NTSTATUS status = ::NtCreateFile(
        &handle, access | SYNCHRONIZE | FILE_READ_ATTRIBUTES, name.Get(), &io, nullptr, attributes,
        share, disposition, options | FILE_SYNCHRONOUS_IO_NONALERT | FILE_OPEN_FOR_BACKUP_INTENT,
        nullptr, 0);
    if (!Succeeded(status))
        return false;
    opened = NtFile(handle);
    return true;
}

bool IsWine()
{
    static const bool isWine =
        ::GetProcAddress(::GetModuleHandleW(L"ntdll.dll"), "wine_get_version") != nullptr;
    return isWine;
}

/// Wine alone needs them; see IsLink in WindowsApi.h.
DWORD AttributesByName(HANDLE folder, const std::wstring& name)
{
    std::wstring path(32768, L'\0');
    const DWORD size =
        IsWine() ? ::GetFinalPathNameByHandleW(folder, path.data(), DWORD(path.size()), 0) : 0;
    if (size == 0 || size >= path.size())
        return 0;
    path.resize(size);
    return ::GetFileAttributesW((path + L'\\' + name).c_str());
}

std::vector<char> RenameRequest(DWORD flags, HANDLE folder, const std::wstring& name)
{
    const std::size_t size = name.size() * sizeof(wchar_t);
    RenameHead head = {flags, folder, static_cast<ULONG>(size), {}};
    std::vector<char> request(sizeof head + size);
    std::memcpy(request.data(), &head, sizeof head);
    std::memcpy(request.data() + offsetof(RenameHead, name), name.data(), size);
    return request;
}

NTSTATUS Rename(HANDLE file, std::vector<char> request, FILE_INFORMATION_CLASS kind)
{
    IO_STATUS_BLOCK io = {};
    return ::NtSetInformationFile(file, &io, request.data(), static_cast<ULONG>(request.size()),
                                  kind);
}

} // namespace

bool OpenIn(HANDLE folder, const std::wstring& name, DWORD access, DWORD share, NtFile& opened)
{
    return IsNameLength(name) && Create(NameIn(folder, name), access, FILE_ATTRIBUTE_NORMAL, share,
                                        FILE_OPEN, FILE_OPEN_REPARSE_POINT, opened);
}

bool OpenThrough(HANDLE folder, const std::wstring& name, DWORD access, DWORD share, NtFile& opened)
{
    return IsNameLength(name) && Create(NameIn(folder, name), access, FILE_ATTRIBUTE_NORMAL, share,
                                        FILE_OPEN, FILE_NON_DIRECTORY_FILE, opened);
}

bool MakeFolderIn(HANDLE folder, const std::wstring& name, DWORD attributes)
{
    NtFile made;
    return IsNameLength(name) && Create(NameIn(folder, name), FILE_LIST_DIRECTORY, attributes,
                                        SharedByAll, FILE_CREATE, FILE_DIRECTORY_FILE, made);
}

bool OpenAgain(HANDLE folder, NtFile& opened)
{
    opened =
        NtFile(::ReOpenFile(folder, FILE_LIST_DIRECTORY, SharedByAll, FILE_FLAG_BACKUP_SEMANTICS));
    return bool(opened);
}

bool IsLink(HANDLE folder, const std::wstring& name, HANDLE opened)
{
    return IsLink(opened, AttributesByName(folder, name));
}

FileStatus EntryStatus(HANDLE folder, const std::wstring& name, HANDLE opened)
{
    FileStatus status = ReadFileStatus(reinterpret_cast<Handle>(opened));
    if (IsLink(folder, name, opened))
        status.kind = FileKind::Link;
    return status;
}

bool RenameInto(HANDLE file, HANDLE folder, const std::wstring& name, bool replace)
{
    if (!IsNameLength(name))
        return false;
    // So that who reads the old file goes on reading it; not every system and disk can.
    const DWORD flags = replace ? ReplaceIfExists | PosixRename : PosixRename;
    if (NT_SUCCESS(Rename(file, RenameRequest(flags, folder, name), RenameInfoEx)))
        return true;
    return Succeeded(Rename(file, RenameRequest(replace, folder, name), FileRenameInformation));
}

} // namespace Halvern::Base
