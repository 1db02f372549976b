// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <string>
#include <utility>

namespace Halvern::Base {

/// The system's text for one of its error numbers (errno, GetLastError), as UTF-8 without a line
/// break at its end. Windows ends it with a full stop. Safe to call from any thread.
std::string SystemErrorText(std::uint32_t code);

/// Whether an operation on the disk succeeded, and if not, why.
class [[nodiscard]] FileResult
{
public:
    /// Success.
    FileResult() = default;
    static FileResult Failed(std::string what, std::uint32_t code = 0, bool isHeld = false)
    {
        FileResult result;
        result.m_failed = true;
        result.m_what = std::move(what);
        result.m_code = code;
        result.m_isHeld = isHeld;
        return result;
    }

    /// True for success.
    explicit operator bool() const noexcept { return !m_failed; }
    /// What could not be done, or why without the system; UTF-8, may be empty when there is a code.
    const std::string& What() const noexcept { return m_what; }
    /// The system's number; 0 when it gave none.
    std::uint32_t Code() const noexcept { return m_code; }
    /// Another program holds the file: later it may work.
    bool IsHeld() const noexcept { return m_isHeld; }
    /// "What: the system's text", or the one of them that there is. Empty for success.
    std::string Text() const;

private:
    std::string m_what;
    std::uint32_t m_code = 0;
    bool m_failed = false;
    bool m_isHeld = false;
};

} // namespace Halvern::Base
