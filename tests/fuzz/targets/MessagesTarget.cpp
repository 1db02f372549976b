// SPDX-License-Identifier: Apache-2.0

#include "Target.h"

#include "isolation/Messages.h"

namespace Halvern::Fuzz {

namespace {

using namespace Isolation;

void TakeOne(MessageReader& message, std::size_t kind)
{
    switch (kind) {
    case 0:
        message.Take<QString>();
        break;
    case 1:
        UnpackLinks(message.Take<QByteArray>());
        break;
    case 2:
        message.Take<std::uint32_t>();
        break;
    case 3:
        message.Take<Outcome>();
        break;
    case 4:
        message.Take<quint64>();
        break;
    default:
        message.Take<bool>();
        break;
    }
}

/// A message of a process that is not trusted, read as anything.
void Try(std::string_view input)
{
    const QByteArray bytes(input.data(), static_cast<qsizetype>(input.size()));
    MessageReader message(bytes);
    Choices choices(input);
    for (int i = 0; i < 8; ++i) {
        const bool wasGood = message.IsGood();
        TakeOne(message, choices.Below(6));
        Require(wasGood || !message.IsGood(), "a bad message became good");
    }
    const std::vector<SyncPlugin::FileLinkInfo> links = UnpackLinks(bytes);
    if (!links.empty())
        Require(PackLinks(links.data(), static_cast<int>(links.size())) == bytes,
                "records do not come back");
}

const RegisteredTarget Registered("messages", Try);

} // namespace

} // namespace Halvern::Fuzz
