// SPDX-License-Identifier: MIT
//
// The answer to a handler's status: for each row of the protocol, good and one that refuses.
#include "cmdsvc/serve.h"

#include <algorithm>
#include <gtest/gtest.h>

#include "tests/support/request.h"
#include "tests/support/root.h"

namespace {

using Lines = std::vector<std::string>;
using cmdsvc::AnswerShape;
using cmdsvc::Command;
using cmdsvc::RefusalShape;
using cmdsvc::Status;
using root::le32;
using root::trace;

const std::string kZero(1, '\0');

/// The status that the handler returns; a plain function cannot get it in another way.
Status returned = cmdsvc::kGood;

Status returnIt(cmdsvc::Channel& channel)
{
    EXPECT_EQ(&channel, &cmdsvc::channel());
    return returned;
}

struct Served {
    std::string answer;
    Lines calls;
    bool hasWorkFile;

    bool operator==(const Served&) const = default;
};

class Serve : public root::Test {
  protected:
    static Served serve(const Command& command, Status status)
    {
        watch::restart();
        returned = status;
        root::writeFile(cmdsvc::kWorkFile, "x");
        EXPECT_TRUE(cmdsvc::channel().open(7));
        cmdsvc::serve(command, returnIt);
        cmdsvc::channel().close();
        return {root::readFile("/tmp/outbuf7"), watch::calls(), root::exists(cmdsvc::kWorkFile)};
    }

    static Served statusOf(const Command& command, std::uint32_t code)
    {
        std::array<char, 80> text{};
        std::snprintf(text.data(), text.size(),
                      "SendReturnStatus errCode 0x%08X -- fwrite return: 10", code);
        return {std::string(command.code) + " " + le32(code) + kZero, {trace(text.data())}, true};
    }
};

TEST_F(Serve, goodStatusIsAnsweredAsTheRowSays)
{
    for (const Command& command : cmdsvc::kCommands) {
        Served expected = {"", {}, true};
        if (command.answer.shape == AnswerShape::kWord) {
            expected.answer = le32(0);
        } else if (command.answer.shape == AnswerShape::kStatus) {
            expected = statusOf(command, 0);
        }
        EXPECT_EQ(serve(command, cmdsvc::kGood), expected) << command.code;
    }
}

TEST_F(Serve, refusalIsAnsweredAsTheRowSays)
{
    const Lines exit = {request::exitTrace(0xFF000004)};
    for (const Command& command : cmdsvc::kCommands) {
        Served expected = {"", {}, true};
        switch (command.refusals.shape) {
        case RefusalShape::kAsWord:
            expected = {le32(0xFF000004), exit, false};
            break;
        case RefusalShape::kAsError:
            expected = {"erro " + le32(0xFF000004), exit, false};
            break;
        case RefusalShape::kAsStatus:
            expected = statusOf(command, 0xFF000004);
            break;
        case RefusalShape::kNeverRefuses:
            break;
        }
        EXPECT_EQ(serve(command, cmdsvc::kCommandFailed), expected) << command.code;
    }
}

TEST_F(Serve, gsp1AnswersABadNameAsAWord)
{
    EXPECT_EQ(serve(cmdsvc::command("gsp1"), cmdsvc::kBadShareName),
              (Served{le32(0xC1000003), {request::exitTrace(0xC1000003)}, false}));
}

TEST_F(Serve, channelKnowsTheCommandsTag)
{
    EXPECT_TRUE(cmdsvc::channel().open(7));
    cmdsvc::serve(cmdsvc::command("wall"), returnIt);
    EXPECT_EQ(cmdsvc::channel().tag(), "wall ");
}

} // namespace
