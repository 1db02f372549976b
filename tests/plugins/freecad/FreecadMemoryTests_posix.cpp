// SPDX-License-Identifier: Apache-2.0

// A large document is packed into a few kilobytes; reading it must not take many times its size.

#include "FreecadFixture.h"
#include "PeakMemory.h"

namespace Halvern::Test {

using FreecadMemory = FreecadFixture;

TEST_F(FreecadMemory, IsBoundedForALongTextWhereALinkIsDue)
{
    constexpr std::size_t size = std::size_t(30) << 20;
    const QByteArray text(static_cast<qsizetype>(size), 'a');
    const struct
    {
        const char* what;
        QByteArray document;
        const char* message;
    } rows[] = {
        {"a path", Document(Property("A", "XLink", XLink(text))),
         "Document.xml: a path of more than 64 KiB at its byte 475"},
        {"a name", Document(Property(text, "XLink", XLink("a.FCStd"))),
         "Document.xml: a text of more than 64 KiB where a name is due at its byte 405"},
    };
    for (const auto& row : rows) {
        const QByteArray archive = Zip({{"Document.xml", row.document}});
        ASSERT_LT(static_cast<std::size_t>(archive.size()), size / 500);
        const PeakMemory peak;
        EXPECT_EQ(ReadFailure(m_file, archive).toStdString(), row.message) << row.what;
        EXPECT_GT(peak.Bytes(), size / 2) << row.what;
        EXPECT_LT(peak.Bytes(), 4 * size + PeakMemory::Overhead) << row.what;
    }
}

} // namespace Halvern::Test
