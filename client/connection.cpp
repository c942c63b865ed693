// SPDX-License-Identifier: MIT
#include "client/connection.h"

#include <asio/local/stream_protocol.hpp>
#include <chrono>
#include <iterator>

namespace client {
namespace {

using Protocol = asio::local::stream_protocol;

Reply complain(ExitCode code, std::string complaint)
{
    return {.code = code, .bytes = {}, .complaint = std::move(complaint)};
}

/// Where the service is, and how long it may take.
struct Way {
    std::string socket;
    unsigned timeout;
};

/// What the command line says wins over the file.
Way findWay(const Connection& connection)
{
    const config::Configuration settings = config::read(connection.file);
    return {connection.socket.value_or(settings.socket),
            connection.timeout.value_or(settings.clientTimeout)};
}

Reply complainOf(const asio::error_code& error, const Way& way)
{
    if (error == asio::error::timed_out || error == asio::error::operation_aborted) {
        return complain(kNoAnswer, "the service has not answered within " +
                                       std::to_string(way.timeout) +
                                       " seconds. It may be busy; try again, or raise --timeout.");
    }
    const std::string reason = "cannot reach the service at " + way.socket + ": " + error.message();
    if (error == asio::error::access_denied) {
        return complain(kNotPermitted, reason + ". Ask root to add you to the group "
                                                "vokcontrol, or try again as root.");
    }
    return complain(kUnreachable, reason + ". Is vokserve running?");
}

/// Whether an answer has come to its end. A service that turns a request down need not have read
/// all of it; then the connection breaks off after the answer.
bool endsWhole(const asio::error_code& error, std::string_view answer)
{
    return !error || error == asio::error::eof ||
           (error == asio::error::connection_reset && !answer.empty());
}

} // namespace

void addConnectionOptions(CLI::App& command, Connection& connection)
{
    const config::Configuration defaults;
    command.add_option("--socket", connection.socket, "Where the service listens")
        ->type_name("PATH")
        ->default_str(defaults.socket);
    command.add_option("--timeout", connection.timeout, "Wait at most so long for the answer")
        ->type_name("SECONDS")
        ->check(CLI::PositiveNumber)
        ->default_str(std::to_string(defaults.clientTimeout));
    command.add_option("--config", connection.file, "Where the settings are read")
        ->type_name("PATH")
        ->capture_default_str();
}

Reply sendRequest(const Connection& connection, std::string_view frame)
{
    const Way way = findWay(connection);
    Protocol::iostream stream;
    stream.expires_after(std::chrono::seconds(way.timeout));
    stream.connect(Protocol::endpoint(way.socket));
    if (!stream) {
        return complainOf(stream.error(), way);
    }
    stream.write(frame.data(), static_cast<std::streamsize>(frame.size()));
    stream.flush();
    asio::error_code ignored;
    stream.socket().shutdown(Protocol::socket::shutdown_send, ignored);
    Reply reply;
    reply.bytes.assign(std::istreambuf_iterator<char>(stream), {});
    if (!endsWhole(stream.error(), reply.bytes)) {
        return complainOf(stream.error(), way);
    }
    return reply;
}

} // namespace client
