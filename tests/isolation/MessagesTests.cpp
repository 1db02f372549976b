// SPDX-License-Identifier: Apache-2.0

#include "isolation/Messages.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

namespace Halvern::Test {

using namespace Isolation;
using namespace Qt::StringLiterals;

TEST(Messages, HoldWhatWasWrittenInThatOrder)
{
    const QByteArray bytes =
        (MessageWriter(Message::Log) << LogSeverity::Warn << u"wörds"_s << 7 << true).Bytes();
    MessageReader message(bytes.mid(LengthSize));
    EXPECT_EQ(message.Kind(), Message::Log);
    EXPECT_EQ(message.Take<LogSeverity>(), LogSeverity::Warn);
    EXPECT_EQ(message.Take<QString>(), u"wörds"_s);
    EXPECT_EQ(message.Take<int>(), 7);
    EXPECT_TRUE(message.Take<bool>());
    EXPECT_TRUE(message.IsGood());
}

TEST(Messages, BeginWithTheirLength)
{
    const QByteArray bytes = (MessageWriter(Message::Done) << u"text"_s).Bytes();
    char length[LengthSize];
    std::copy_n(bytes.constData(), LengthSize, length);
    EXPECT_EQ(LengthOf(length), bytes.size() - LengthSize);
}

TEST(Messages, CutOffAnywhereAreBadAndGiveEmptyValues)
{
    const QByteArray bytes = (MessageWriter(Message::Log) << u"a text"_s << QByteArray(100, 'x'))
                                 .Bytes()
                                 .mid(LengthSize);
    for (qsizetype size = 0; size < bytes.size(); ++size) {
        MessageReader message(bytes.first(size));
        (void)message.Take<QString>();
        (void)message.Take<QByteArray>();
        EXPECT_FALSE(message.IsGood()) << size;
        EXPECT_EQ(message.Take<int>(), 0) << size;
    }
}

TEST(Messages, LinkRecordsGoByteForByteWhateverTheyHold)
{
    SyncPlugin::FileLinkInfo link;
    std::fill_n(reinterpret_cast<unsigned char*>(&link), sizeof link, 0xAB);
    const QByteArray bytes = PackLinks(&link, 1);
    const std::vector<SyncPlugin::FileLinkInfo> links = UnpackLinks(bytes);
    ASSERT_EQ(links.size(), 1U);
    EXPECT_EQ(std::memcmp(links.data(), &link, sizeof link), 0);
    EXPECT_TRUE(UnpackLinks(bytes.chopped(1)).empty());
    EXPECT_TRUE(PackLinks(nullptr, 3).isEmpty());
    EXPECT_TRUE(PackLinks(&link, -1).isEmpty());
}

} // namespace Halvern::Test
