// SPDX-License-Identifier: MIT
#include "page/module.h"

#include <gtest/gtest.h>
#include <stdexcept>
#include <string>

#include "tests/support/root.h"

namespace {

namespace module = page::module;

class Module : public root::Test {};

TEST_F(Module, functionsAreFoundByName)
{
    EXPECT_EQ(module::lookUp("getvar"), reinterpret_cast<void*>(&::getvar));
    EXPECT_EQ(module::lookUp("tideWaveFunc"), reinterpret_cast<void*>(&::tideWaveFunc));
}

TEST_F(Module, everyNameThatPagesUseIsInTheLibrary)
{
    for (const char* name : {"getDriveInfos", "getvar", "kytegetSysVar", "printNextPage",
                             "printTovHDDs", "setSysVar", "setvar", "tideWaveFunc"}) {
        EXPECT_NE(module::lookUp(name), nullptr) << name;
    }
}

TEST_F(Module, missingFunctionIsAnException)
{
    try {
        (void)module::lookUp("no_such_function");
        FAIL() << "it was found";
    } catch (const std::runtime_error& failure) {
        EXPECT_STREQ(failure.what(), "the library has no function no_such_function");
    }
}

TEST_F(Module, callsPassArgumentsAndResults)
{
    root::writeFile("/etc/pelconfig/system_var", "name=old\n");
    EXPECT_EQ(module::setvar("name", "new value"), 0);
    EXPECT_STREQ(module::getvar("name"), "new value");
    EXPECT_EQ(root::readFile("/etc/pelconfig/system_var"), "name=new value\n");
}

} // namespace
