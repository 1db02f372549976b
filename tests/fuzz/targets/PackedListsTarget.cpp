// SPDX-License-Identifier: Apache-2.0

#include "Target.h"

#include "jobs/PackedLists.h"

#include <algorithm>

namespace Halvern::Fuzz {

namespace {

using namespace Jobs;

void TryLinks(QByteArrayView bytes)
{
    try {
        const QList<SyncServices::FileLink> links = UnpackLinks(bytes);
        Require(UnpackLinks(PackLinks(links)) == links, "a list of links does not come back");
    } catch (const Violation&) {
        throw;
    } catch (const std::runtime_error&) {
    }
}

void TryTexts(QByteArrayView bytes)
{
    try {
        const QStringList texts = UnpackTexts(bytes);
        Require(UnpackTexts(PackTexts(texts)) == texts, "a list of texts does not come back");
    } catch (const Violation&) {
        throw;
    } catch (const std::runtime_error&) {
    }
}

void Try(std::string_view input)
{
    const QByteArrayView bytes(input.data(), static_cast<qsizetype>(input.size()));
    TryLinks(bytes);
    TryTexts(bytes);
    TextFromBytes(bytes);
    QString text(static_cast<qsizetype>(input.size() / 2), QChar());
    std::copy_n(input.data(), input.size() / 2 * 2, reinterpret_cast<char*>(text.data()));
    Require(TextFromBytes(TextToBytes(text)) == text, "a text does not come back");
}

const RegisteredTarget Registered("packed_lists", Try);

} // namespace

} // namespace Halvern::Fuzz
