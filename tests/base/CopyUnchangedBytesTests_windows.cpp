// SPDX-License-Identifier: Apache-2.0

// Sources that somebody else has open while they are copied.

#include "CopyBytesFixture.h"
#include "base/ContentHash.h"
#include "base/FileStatus.h"

#include <atomic>
#include <thread>

#include <windows.h>

namespace Halvern::Test {

namespace {

class CopyUnchangedOnWindows : public CopyBytes
{
protected:
    HANDLE OpenSource(DWORD access) const
    {
        return ::CreateFileW(Native(tree.Path(u"in/big.prt"_s)).c_str(), access,
                             FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                             OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    }
    Base::FileResult CopyBig()
    {
        return Base::CopyUnchangedBytes(Native(tree.Path(u"in/big.prt"_s)),
                                        Native(tree.Path(u"out/big.prt"_s)), copied, &hash);
    }

    Base::FileStatus copied;
    Base::ContentHash hash;
};

} // namespace

TEST_F(CopyUnchangedOnWindows, FailsWhenAProgramThatHadTheFileOpenLetItGrow)
{
    tree.File(u"in/big.prt"_s, PatternBytes(qint64(16) << 20));
    const HANDLE other = OpenSource(FILE_APPEND_DATA);
    ASSERT_NE(other, INVALID_HANDLE_VALUE);
    std::atomic<bool> isOver = false;
    std::thread writer([&] {
        DWORD wrote = 0;
        while (!isOver && ::WriteFile(other, "x", 1, &wrote, nullptr))
            ::Sleep(1);
    });
    Base::FileResult result;
    for (int attempt = 0; attempt < 50 && result; ++attempt) {
        result = CopyBig();
        if (result)
            tree.Remove(u"out/big.prt"_s);
    }
    isOver = true;
    writer.join();
    ::CloseHandle(other);
    EXPECT_EQ(result.Problem(), Base::FileProblem::Changed) << result.Text();
    EXPECT_EQ(Names(), (QStringList{u"a.prt"_s, u"big.prt"_s}));
}

TEST_F(CopyUnchangedOnWindows, CopiesWhatOthersHaveOpenAndLeaveAlone)
{
    tree.File(u"in/big.prt"_s, PatternBytes(SeveralBuffers));
    for (const DWORD access :
         {DWORD(GENERIC_READ), DWORD(GENERIC_READ | GENERIC_WRITE), DWORD(GENERIC_READ | DELETE)}) {
        const HANDLE other = OpenSource(access);
        ASSERT_NE(other, INVALID_HANDLE_VALUE);
        const Base::FileResult result = CopyBig();
        ::CloseHandle(other);
        EXPECT_TRUE(result) << access << result.Text();
        EXPECT_TRUE(tree.Read(u"out/big.prt"_s) == PatternBytes(SeveralBuffers));
        tree.Remove(u"out/big.prt"_s);
    }
}

} // namespace Halvern::Test
