// SPDX-License-Identifier: MIT
#include "client/connection.h"

#include <algorithm>
#include <array>
#include <asio/local/stream_protocol.hpp>
#include <chrono>
#include <optional>
#include <sys/socket.h>
#include <unistd.h>

#include "view/wording.h"

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
                                       view::formatCount(way.timeout, "second", "seconds") +
                                       ". It may be busy; try again, or raise --timeout.");
    }
    const std::string reason = "cannot reach the service at " + way.socket + ": " + error.message();
    if (error == asio::error::access_denied) {
        return complain(kNotPermitted, reason + ". Ask root to add you to the group "
                                                "vokcontrol, or try again as root.");
    }
    return complain(kUnreachable, reason + ". Is vokserve running?");
}

/// The user who made the socket listen; nothing if the kernel does not tell.
std::optional<uid_t> serverOf(int socket)
{
    ucred credentials = {};
    socklen_t size = sizeof credentials;
    if (::getsockopt(socket, SOL_SOCKET, SO_PEERCRED, &credentials, &size) != 0) {
        return std::nullopt;
    }
    return credentials.uid;
}

/// Somebody else at the socket would be told passwords, and could answer anything.
std::optional<Reply> complainOfServer(int socket, const std::string& path)
{
    const std::optional<uid_t> server = serverOf(socket);
    if (server == uid_t{0} || server == ::geteuid()) {
        return std::nullopt;
    }
    const std::string who = server ? "user " + std::to_string(*server) : "an unknown user";
    return complain(kNotPermitted,
                    "the service at " + path + " is run by " + who +
                        ", neither by root nor by you, so it is not asked. To ask it "
                        "all the same: --any-server");
}

/// Reads to the end, or one byte more than is allowed. An answer can have come although the request
/// could not be sent whole.
std::string readAnswer(std::streambuf& source, std::size_t longest)
{
    std::string answer;
    std::array<char, 16384> piece;
    std::streamsize got = 1;
    while (got > 0 && answer.size() <= longest) {
        const std::size_t wanted = std::min(piece.size(), longest + 1 - answer.size());
        got = source.sgetn(piece.data(), static_cast<std::streamsize>(wanted));
        answer.append(piece.data(), static_cast<std::size_t>(got));
    }
    return answer;
}

/// Whether an answer has come to its end. A service that turns a request down need not have read
/// all of it; then the connection breaks off after the answer.
bool endsWhole(const asio::error_code& error, std::string_view answer)
{
    return !error || error == asio::error::eof ||
           (error == asio::error::connection_reset && !answer.empty());
}

} // namespace

Reply sendRequest(const Connection& connection, std::string_view frame, std::size_t longest)
{
    const Way way = findWay(connection);
    Protocol::iostream stream;
    stream.expires_after(std::chrono::seconds(way.timeout));
    stream.connect(Protocol::endpoint(way.socket));
    if (!stream) {
        return complainOf(stream.error(), way);
    }
    const int socket = stream.socket().native_handle();
    const auto complaint =
        connection.anyServer ? std::nullopt : complainOfServer(socket, way.socket);
    if (complaint) {
        return *complaint;
    }
    stream.write(frame.data(), static_cast<std::streamsize>(frame.size()));
    stream.flush();
    asio::error_code ignored;
    stream.socket().shutdown(Protocol::socket::shutdown_send, ignored);
    Reply reply;
    reply.bytes = readAnswer(*stream.rdbuf(), longest);
    if (reply.bytes.size() > longest) {
        return complain(kUnreadableAnswer, "the answer is longer than " + std::to_string(longest) +
                                               " bytes, which no good answer is");
    }
    if (!endsWhole(stream.error(), reply.bytes)) {
        return complainOf(stream.error(), way);
    }
    return reply;
}

} // namespace client
