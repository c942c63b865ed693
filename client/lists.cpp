// SPDX-License-Identifier: MIT
#include "client/lists.h"

#include "client/exchange.h"

namespace client {

ShareList fetchShares(const Connection& connection)
{
    const Request request = {cmdsvc::command("lsts")};
    const auto [answer, lines] = askForLines(connection, request);
    if (lines.size() % 2 != 0) {
        failUnreadable(request, answer);
    }
    ShareList list{.shares = {}, .internal = answer.count};
    for (std::size_t i = 0; i < lines.size(); i += 2) {
        list.shares.push_back({lines[i], lines[i + 1]});
    }
    return list;
}

std::string fetchPublicName(const Connection& connection)
{
    const Request request = {cmdsvc::command("gps1")};
    const auto [answer, lines] = askForLines(connection, request);
    if (lines.size() != 1) {
        failUnreadable(request, answer);
    }
    return lines[0];
}

std::vector<std::string> fetchUsers(const Connection& connection)
{
    const Request request = {cmdsvc::command("lstu")};
    auto [answer, lines] = askForLines(connection, request);
    if (lines.size() != answer.count) {
        failUnreadable(request, answer);
    }
    return lines;
}

} // namespace client
