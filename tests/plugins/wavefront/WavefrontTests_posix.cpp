// SPDX-License-Identifier: Apache-2.0

// Where a backslash can be part of a file's name.

#include "FormatFixture.h"

#include "wavefront/WavefrontResolver.h"

namespace Halvern::Test {

using namespace Qt::StringLiterals;

namespace {

class PosixWavefront : public ResolverFixture
{
protected:
    PosixWavefront() : ResolverFixture(m_resolver) {}

private:
    Formats::Wavefront::WavefrontResolver m_resolver;
};

} // namespace

TEST_F(PosixWavefront, ABackslashStaysWhereAFileIsNamedWithIt)
{
    tree.File(u"tex\\a.png"_s).File(u"a.mtl"_s, "map_Kd tex\\a.png\n");
    EXPECT_EQ(Read(u"a.mtl"_s), (Links{LinkTo(u"/map_kd", u"tex\\a.png")}));
}

} // namespace Halvern::Test
