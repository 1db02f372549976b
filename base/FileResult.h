// SPDX-License-Identifier: Apache-2.0

#pragma once

#include <cstdint>
#include <string>
#include <utility>

namespace Halvern::Base {

/// The system's text for one of its error numbers (errno, GetLastError), as UTF-8 without a line
/// break at its end. Windows ends it with a full stop. Safe to call from any thread.
std::string SystemErrorText(std::uint32_t code);

/// What kind of failure it is, for callers that go on differently after it or tell it in words of
/// their own.
enum class FileProblem
{
    /// Success.
    None,
    /// None of those below.
    Other,
    /// Another program holds the file: later it may work.
    Held,
    /// There is nothing of that name.
    Missing,
    /// There is something of that name.
    NameTaken,
    /// A folder is needed where something else is.
    NotAFolder,
    /// A folder is where none may be.
    IsAFolder,
    /// The folder has something in it.
    NotEmpty,
    /// The disk is full.
    NoSpace,
    /// The two names lie on different disks.
    OtherDisk,
    /// The system or the disk does not take the name: it is too long, or has a letter that may not
    /// be in it.
    NameRefused,
    /// The way leads out of the folder that it must stay in, or through a link.
    LeadsOutside,
    /// The file became another one while it was read.
    Changed,
    /// A WorkWatch wanted it to end.
    Stopped
};

/// The kind of one of the system's error numbers; Other for most. Safe to call from any thread.
FileProblem ProblemOf(std::uint32_t code) noexcept;

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
    /// A failure whose kind the system's number does not tell.
    static FileResult Refused(FileProblem problem, std::string what, std::uint32_t code = 0)
    {
        FileResult result = Failed(std::move(what), code);
        result.m_problem = problem;
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
    FileProblem Problem() const noexcept;
    /// "What: the system's text", or the one of them that there is. Empty for success.
    std::string Text() const;

private:
    std::string m_what;
    std::uint32_t m_code = 0;
    FileProblem m_problem = FileProblem::Other;
    bool m_failed = false;
    bool m_isHeld = false;
};

} // namespace Halvern::Base
