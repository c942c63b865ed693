// SPDX-License-Identifier: MIT
#include "client/doctor_report.h"

#include <gtest/gtest.h>

namespace {

using namespace client;

constexpr Check kSudo = {"sudo", true, nullptr, nullptr};
constexpr Check kPelparam = {"pelparam", true, nullptr, nullptr};

TEST(DoctorReport, textHasALineForEachCheckAndCountsThem)
{
    EXPECT_EQ(renderDoctorText({{&kSudo, good("It runs.")},
                                {&kPelparam, wrong("It said \"\x1B\n\".", "mend it")},
                                {&kSudo, unneeded("None.")},
                                {&kSudo, unchecked("Not checked: run as root.")}}),
              "ok     sudo      It runs.\n"
              "WRONG  pelparam  It said \"\\u{1b}\\u{a}\". What to do: mend it.\n"
              "-      sudo      None.\n"
              "?      sudo      Not checked: run as root.\n"
              "\n"
              "Wrong: 1, not checked: 1, checks in all: 4.\n");
}

TEST(DoctorReport, jsonHasAllOfIt)
{
    EXPECT_EQ(renderDoctorJson({{&kSudo, good("It runs.")},
                                {&kPelparam, wrong("It said \xFF.", "mend it")},
                                {&kSudo, unneeded("None.")},
                                {&kSudo, unchecked("Not now.")}}),
              R"({
  "wrong": 1,
  "unchecked": 1,
  "checks": [
    {
      "name": "sudo",
      "result": "good",
      "reason": "It runs.",
      "remedy": null
    },
    {
      "name": "pelparam",
      "result": "wrong",
      "reason": "It said \ufffd.",
      "remedy": "mend it"
    },
    {
      "name": "sudo",
      "result": "unneeded",
      "reason": "None.",
      "remedy": null
    },
    {
      "name": "sudo",
      "result": "unchecked",
      "reason": "Not now.",
      "remedy": null
    }
  ]
}
)");
}

TEST(DoctorReport, endsWithOneOnlyIfSomethingIsWrong)
{
    EXPECT_EQ(exitCodeOf({{&kSudo, good("")}, {&kSudo, unneeded("")}, {&kSudo, unchecked("")}}),
              kGood);
    EXPECT_EQ(exitCodeOf({{&kSudo, good("")}, {&kSudo, wrong("", "")}}), kRefused);
}

} // namespace
