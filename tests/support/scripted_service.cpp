// SPDX-License-Identifier: MIT
#include "tests/support/scripted_service.h"

#include <filesystem>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

int root::listenAt(const std::string& path)
{
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path, sizeof address.sun_path - 1);
    const int listener = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    EXPECT_EQ(::bind(listener, reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
    EXPECT_EQ(::listen(listener, 1), 0);
    return listener;
}

std::string root::receiveAll(int socket)
{
    std::string bytes;
    for (char byte = 0; ::read(socket, &byte, 1) > 0;) {
        bytes += byte;
    }
    return bytes;
}

root::Exchange root::exchange(std::vector<std::string> arguments,
                              const std::vector<std::string>& answers)
{
    const std::string path = "/tmp/other";
    const int listener = listenAt(path);
    arguments.insert(arguments.begin(), built("vokctl"));
    arguments.insert(arguments.end(), {"--socket", path});
    Program client(arguments);
    std::vector<std::string> frames;
    for (const std::string& answer : answers) {
        const int socket = ::accept4(listener, nullptr, nullptr, SOCK_CLOEXEC);
        frames.push_back(receiveAll(socket));
        EXPECT_EQ(::write(socket, answer.data(), answer.size()),
                  static_cast<ssize_t>(answer.size()));
        ::close(socket);
    }
    ::close(listener);
    std::filesystem::remove(path);
    return {frames, client.wait()};
}
