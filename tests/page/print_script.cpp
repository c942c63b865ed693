// SPDX-License-Identifier: MIT
//
// usage: print_script raw|page FIELD
//
// Calls every function that prints script, with a form whose field "next_page" is FIELD, and prints
// what they print: as it is, or as a page carries it.
#include <array>
#include <cstdio>
#include <string_view>

#include "page/form.h"
#include "page/script.h"
#include "vokcontrol.h"

namespace {

void printAll()
{
    std::array<DriveInfo, 4> records = {};
    std::array<std::int32_t, 2> indices = {};
    ::getInternalHDDDev();
    ::getInternalHDDIndex(indices.data());
    ::getDriveInfos(records.data());
    ::printTovHDDs();
    ::getvar("anything");
    ::kyteGetVar("sudo /usr/bin/php /etc/inc/api_system.php tovGetLanguage", "<language>");
    ::printNextPage();
    ::tideWaveFunc(1);
    ::tideWaveFunc(0);
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 3) {
        return 2;
    }
    page::Form form;
    form.set("next_page", argv[2]);
    const page::CurrentForm current(form);
    if (std::string_view(argv[1]) == "raw") {
        printAll();
        return 0;
    }
    page::Script script;
    script.run(printAll);
    std::fputs(script.text().c_str(), stdout);
    return 0;
}
