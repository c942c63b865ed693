// SPDX-License-Identifier: MIT
#include "page/accounts.h"

#include <vector>

#include "client/exchange.h"
#include "client/failure.h"
#include "core/bytes.h"
#include "page/service.h"

namespace page {
namespace {

/// What the service can take for a name or a password in one piece.
constexpr std::size_t kLongest = 200;

bool isSendable(const std::string& text)
{
    return !text.empty() && text.size() <= kLongest &&
           text.find_first_of(std::string_view("\r\n\0", 3)) == std::string::npos;
}

bool isRight(const client::Connection& connection, const Credentials& credentials)
{
    try {
        const client::Answer answer = client::ask(
            connection, {cmdsvc::command("wall"), {credentials.name, credentials.password}});
        return answer.body == "\n";
    } catch (const client::Failure& failure) {
        if (failure.code() == client::kRefused) {
            return false;
        }
        throw;
    }
}

/// The accounts whose names are this one but for the case of their letters.
std::vector<std::string> accountsLike(const client::Connection& connection, const std::string& name)
{
    std::vector<std::string> names =
        client::askForLines(connection, {cmdsvc::command("lstu")}).lines;
    std::erase_if(
        names, [&name](const std::string& each) { return !core::equalIgnoringCase(each, name); });
    return names;
}

} // namespace

std::optional<std::string> checkPassword(const config::Configuration& settings,
                                         const Credentials& credentials)
{
    const client::Connection connection = connectionOf(settings);
    if (!isSendable(credentials.name) || !isSendable(credentials.password) ||
        !isRight(connection, credentials)) {
        return std::nullopt;
    }
    const std::vector<std::string> names = accountsLike(connection, credentials.name);
    return (names.size() == 1) ? std::optional(names.front()) : std::nullopt;
}

void createAccount(const config::Configuration& settings, const Credentials& credentials)
{
    client::askToDo(connectionOf(settings),
                    {cmdsvc::command("crat"), {credentials.name, credentials.password}});
}

} // namespace page
