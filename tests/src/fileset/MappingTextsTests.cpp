// SPDX-License-Identifier: Apache-2.0

#include "Mappings.h"
#include "fileset/FileMappingRef.h"

#include <gtest/gtest.h>

#include <array>
#include <functional>
#include <string>

namespace {

using namespace Halvern;
using namespace Halvern::FileLink;
using namespace Halvern::Test;
using namespace Qt::StringLiterals;
using SyncPlugin::WideChar;

constexpr WideChar Untouched = 0x2592;
constexpr int Capacity = 64;

/// A buffer in which one sees what was written.
class Buffer
{
public:
    Buffer() { m_text.fill(Untouched); }

    WideChar* Data() { return m_text.data(); }
    QString Text() const
    {
        qsizetype length = 0;
        while (length < Capacity && m_text[size_t(length)] != 0 &&
               m_text[size_t(length)] != Untouched)
            ++length;
        return QString(reinterpret_cast<const QChar*>(m_text.data()), length);
    }
    /// The number of characters written, from the first one on.
    int Written() const
    {
        int count = 0;
        for (int i = 0; i < Capacity; ++i)
            if (m_text[size_t(i)] != Untouched)
                count = i + 1;
        return count;
    }

private:
    std::array<WideChar, Capacity> m_text;
};

struct TextAnswer
{
    const char* name;
    unsigned int (*ask)(FileMappingRef& node, WideChar* buffer, int size);
    QString text;
};

void PrintTo(const TextAnswer& answer, std::ostream* out)
{
    *out << answer.name;
}

/// An absolute path of this system with four characters.
const QString Base = QDir::rootPath() == u"/" ? u"/clo"_s : u"C:/c"_s;

const TextAnswer answers[] = {
    {"GetRefId", [](auto& node, auto* buffer, int size) { return node.GetRefId(buffer, size); },
     u"reference1"_s},
    {"GetSourceFile",
     [](auto& node, auto* buffer, int size) { return node.GetSourceFile(buffer, size); },
     u"D:/w/src.prt"_s},
    {"GetTargetFile",
     [](auto& node, auto* buffer, int size) { return node.GetTargetFile(buffer, size); },
     u"D:/c/tgt.prt"_s},
    {"GetTargetPath",
     [](auto& node, auto* buffer, int size) { return node.GetTargetPath(buffer, size); },
     u"D:/c/tgt.prt"_s},
    {"ResolveTargetPath",
     [](auto& node, auto* buffer, int size) {
         const QString path = u"x.prt"_s;
         return node.ResolveTargetPath(reinterpret_cast<const WideChar*>(path.utf16()), buffer,
                                       size);
     },
     Base + u"/x.prt"_s},
    {"GetTargetRootFolder",
     [](auto& node, auto* buffer, int size) { return node.GetTargetRootFolder(buffer, size); },
     Base},
};

class EveryTextAnswer : public ::testing::TestWithParam<TextAnswer>
{
protected:
    EveryTextAnswer() { node.SetTargetBaseFolder(Base); }

    const TextAnswer answer = GetParam();
    const int length = int(answer.text.size());
    FileMappingRef node{u"link"_s, u"reference1"_s,
                        MakeFile(u"D:/w/src.prt"_s, FileMapping::NoFlag, u"D:/c/tgt.prt"_s)};
    Buffer buffer;
};

TEST_P(EveryTextAnswer, GivesTheLengthForNoBufferWhateverTheSize)
{
    for (const int size : {0, -1, 1, 5, 1000})
        EXPECT_EQ(answer.ask(node, nullptr, size), unsigned(length));
}

TEST_P(EveryTextAnswer, WritesNothingIntoNoRoom)
{
    for (const int size : {0, -1, -1000}) {
        EXPECT_EQ(answer.ask(node, buffer.Data(), size), 0u);
        EXPECT_EQ(buffer.Written(), 0);
    }
}

TEST_P(EveryTextAnswer, WritesAZeroIntoRoomForOne)
{
    EXPECT_EQ(answer.ask(node, buffer.Data(), 1), 0u);
    EXPECT_EQ(buffer.Written(), 1);
    EXPECT_EQ(buffer.Text(), QString());
}

TEST_P(EveryTextAnswer, IsCutToTheRoomAndTerminated)
{
    EXPECT_EQ(answer.ask(node, buffer.Data(), 3), 2u);
    EXPECT_EQ(buffer.Written(), 3);
    EXPECT_EQ(buffer.Text(), answer.text.left(2));
}

TEST_P(EveryTextAnswer, LosesItsLastCharacterWhenOnlyTheZeroIsMissing)
{
    EXPECT_EQ(answer.ask(node, buffer.Data(), length), unsigned(length - 1));
    EXPECT_EQ(buffer.Written(), length);
    EXPECT_EQ(buffer.Text(), answer.text.chopped(1));
}

TEST_P(EveryTextAnswer, FillsABufferOfTheExactSize)
{
    EXPECT_EQ(answer.ask(node, buffer.Data(), length + 1), unsigned(length));
    EXPECT_EQ(buffer.Written(), length + 1);
    EXPECT_EQ(buffer.Text(), answer.text);
}

TEST_P(EveryTextAnswer, WritesNothingBehindItsZeroInALongBuffer)
{
    EXPECT_EQ(answer.ask(node, buffer.Data(), Capacity), unsigned(length));
    EXPECT_EQ(buffer.Written(), length + 1);
    EXPECT_EQ(buffer.Text(), answer.text);
}

INSTANTIATE_TEST_SUITE_P(Answers, EveryTextAnswer, ::testing::ValuesIn(answers),
                         [](const auto& answer) { return answer.param.name; });

TEST(TextAnswers, OfNothingAreAZero)
{
    FileMappingRef node(QString(), QString(), nullptr);
    const std::function<unsigned int(WideChar*, int)> asks[] = {
        [&](WideChar* b, int size) { return node.GetRefId(b, size); },
        [&](WideChar* b, int size) { return node.GetSourceFile(b, size); },
        [&](WideChar* b, int size) { return node.GetTargetFile(b, size); },
        [&](WideChar* b, int size) { return node.GetTargetPath(b, size); },
        [&](WideChar* b, int size) { return node.ResolveTargetPath(nullptr, b, size); },
        [&](WideChar* b, int size) { return node.GetTargetRootFolder(b, size); },
    };
    for (const auto& ask : asks) {
        Buffer buffer;
        EXPECT_EQ(ask(nullptr, 0), 0u);
        EXPECT_EQ(ask(buffer.Data(), 0), 0u);
        EXPECT_EQ(buffer.Written(), 0);
        EXPECT_EQ(ask(buffer.Data(), 5), 0u);
        EXPECT_EQ(buffer.Written(), 1);
        EXPECT_EQ(buffer.Text(), QString());
    }
}

TEST(TextAnswers, OfFiveCharactersHoldFourOfATenCharacterPath)
{
    FileMappingRef node(QString(), QString(), MakeFile(u"D:/src.prt"_s));
    Buffer buffer;
    EXPECT_EQ(node.GetSourceFile(nullptr, 0), 10u);
    EXPECT_EQ(node.GetSourceFile(buffer.Data(), 5), 4u);
    EXPECT_EQ(buffer.Text(), u"D:/s"_s);
    EXPECT_EQ(buffer.Written(), 5);
}

TEST(TextsOfPlugIns, ArriveCharacterByCharacter)
{
    const std::u16string text = u"\ufeff/w/\u00e4\U0001f600\xd800x";
    EXPECT_EQ(FromPluginString(reinterpret_cast<const WideChar*>(text.c_str())),
              QString(reinterpret_cast<const QChar*>(text.data()), qsizetype(text.size())));
    EXPECT_EQ(FromPluginString(nullptr), QString());
}

} // namespace
