// SPDX-License-Identifier: MIT
//
// Runs one request, from the dispatcher through its handler to the answer.
//
//   input     the request's bytes, at most 4096
//             optional, after a line "--": a byte, the exit status of all shell lines of the
//             request, and the text that they print, which is also in the files that handlers read
#include <algorithm>
#include <filesystem>
#include <iterator>

#include "fuzz/fuzz.h"
#include "fuzz/shell_stub.h"
#include "vokcontrol.h"

namespace {

constexpr const char* kModuleFolder = "/etc/pelconfig/vokcontrol";
constexpr const char* kReportsFolder = "/etc/pelconfig/vokcontrol/__bksts";

struct Input {
    std::string_view request;
    int exitStatus = 0;
    std::string_view text;
};

Input takeApart(std::string_view bytes)
{
    constexpr std::string_view kMark = "--\n";
    const std::size_t mark = bytes.find(kMark);
    Input input;
    input.request = bytes.substr(0, std::min<std::size_t>(mark, VOK_REQUEST_SIZE));
    if (mark != std::string_view::npos && mark + kMark.size() < bytes.size()) {
        const std::string_view behind = bytes.substr(mark + kMark.size());
        input.exitStatus = static_cast<unsigned char>(behind[0]);
        input.text = behind.substr(1);
    }
    return input;
}

/// Every run begins with the same files, with this text.
void layOut(std::string_view text)
{
    for (const char* folder : {kReportsFolder, "/usr/private"}) {
        std::filesystem::create_directories(folder);
    }
    for (const char* folder : {"/tmp", "/etc/pelconfig", kModuleFolder, kReportsFolder}) {
        fuzz::emptyFolder(folder);
    }
    for (const char* path :
         {"/etc/buildinfo.txt", "/etc/pelconfig/system_var",
          "/etc/pelconfig/vokcontrol/__shrStatus",
          "/etc/pelconfig/vokcontrol/vokcontrol-private.txt", "/usr/private/smbpasswd"}) {
        fuzz::writeFile(path, text);
    }
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const Input input = takeApart(fuzz::textOf(data, size));
    layOut(input.text);
    fuzz::setShell(input.exitStatus, input.text);
    std::ranges::fill(fin_buf, '\0');
    input.request.copy(std::data(fin_buf), std::size(fin_buf));
    const int result = process_command(1);
    fuzz::require(result == 0 || result == -1 || input.exitStatus != 0);
    return 0;
}
