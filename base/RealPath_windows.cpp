// SPDX-License-Identifier: Apache-2.0

#include "base/RealPath.h"

#include "base/WindowsApi.h"
#include "base/WindowsApiPath.h"

namespace Halvern::Base {

std::filesystem::path RealPath(const std::filesystem::path& path)
{
    const OpenFile file(ApiPath(path), 0, FILE_FLAG_BACKUP_SEMANTICS);
    if (!file)
        return {};
    std::wstring real(32768, L'\0');
    const DWORD size = ::GetFinalPathNameByHandleW(file.Get(), real.data(), DWORD(real.size()), 0);
    real.resize(size < real.size() ? size : 0);
    return ToWide(WithoutApiPrefix(FromWide(real)));
}

bool MayLeadElsewhere(const std::filesystem::path&)
{
    return true;
}

} // namespace Halvern::Base
