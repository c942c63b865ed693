// SPDX-License-Identifier: MIT
#include "cmdsvc/serve.h"

#include <array>

namespace cmdsvc {
namespace {

void sendStatus(const Command& command, Status status)
{
    std::array<char, kCodeSize + 1> name = {};
    command.code.copy(name.data(), kCodeSize);
    SendReturnStatus(wordOf(status), name.data());
}

void answerGood(Channel& channel, const Command& command)
{
    if (command.answer.shape == AnswerShape::kWord) {
        channel.writeWord(kGood);
    } else if (command.answer.shape == AnswerShape::kStatus) {
        sendStatus(command, kGood);
    }
}

RefusalShape shapeOf(const Refusals& refusals, Status status)
{
    return (status == refusals.malformed) ? refusals.malformedShape : refusals.shape;
}

void refuse(Channel& channel, const Command& command, Status status)
{
    switch (shapeOf(command.refusals, status)) {
    case RefusalShape::kAsWord:
        channel.endWithWord(status);
        break;
    case RefusalShape::kAsError:
        channel.endWithError(status);
        break;
    case RefusalShape::kAsStatus:
        sendStatus(command, status);
        break;
    case RefusalShape::kNeverRefuses:
        break;
    }
}

} // namespace

void serve(const Command& command, Handler handler)
{
    Channel& used = channel();
    used.begin(command);
    const Status status = handler(used);
    if (status == kGood) {
        answerGood(used, command);
    } else {
        refuse(used, command, status);
    }
}

} // namespace cmdsvc
