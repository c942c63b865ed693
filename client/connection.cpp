// SPDX-License-Identifier: MIT
#include "client/connection.h"

#include <algorithm>
#include <array>
#include <asio/local/stream_protocol.hpp>
#include <chrono>
#include <optional>
#include <sys/socket.h>
#include <unistd.h>

#include "client/reasons.h"
#include "text/translation.h"

namespace client {
namespace {

using Protocol = asio::local::stream_protocol;
using text::fill;
using text::tr;
using text::trn;

Reply complain(ExitCode code, std::string complaint)
{
    return {.code = code, .bytes = {}, .complaint = std::move(complaint)};
}

/// The service's socket, and how long an answer may take.
struct Way {
    std::string socket;
    unsigned timeout;
};

/// Takes the settings from the command line, and the others from the file.
Way findWay(const Connection& connection)
{
    const config::Configuration settings = config::read(connection.file);
    return {connection.socket.value_or(settings.socket),
            connection.timeout.value_or(settings.clientTimeout)};
}

Reply complainOf(const asio::error_code& error, const Way& way)
{
    if (error == asio::error::timed_out || error == asio::error::operation_aborted) {
        return complain(kNoAnswer,
                        fill(trn("the service has not answered within {} second. It may be busy; "
                                 "try again, or raise --timeout.",
                                 "the service has not answered within {} seconds. It may be busy; "
                                 "try again, or raise --timeout.",
                                 way.timeout),
                             {std::to_string(way.timeout)}));
    }
    const std::string reason = error.message();
    if (error == asio::error::access_denied) {
        return complain(kNotPermitted,
                        fill(tr("cannot reach the service at {1}: {2}. Ask root to add you to the "
                                "group vokcontrol, or try again as root."),
                             {way.socket, reason}));
    }
    return complain(kUnreachable,
                    fill(tr("cannot reach the service at {1}: {2}. Is vokserve running?"),
                         {way.socket, reason}));
}

/// The user who made the socket listen; nothing if the kernel does not report it.
std::optional<uid_t> serverOf(int socket)
{
    ucred credentials = {};
    socklen_t size = sizeof credentials;
    if (::getsockopt(socket, SOL_SOCKET, SO_PEERCRED, &credentials, &size) != 0) {
        return std::nullopt;
    }
    return credentials.uid;
}

/// Refuses a service of another user: it would get passwords, and could answer anything.
std::optional<Reply> complainOfServer(int socket, const std::string& path)
{
    const std::optional<uid_t> server = serverOf(socket);
    if (server == uid_t{0} || server == ::geteuid()) {
        return std::nullopt;
    }
    if (!server) {
        return complain(kNotPermitted,
                        fill(tr("the service at {} is run by an unknown user, neither by root nor "
                                "by you, so nothing was sent. To use it anyway: --any-server"),
                             {path}));
    }
    return complain(kNotPermitted,
                    fill(tr("the service at {1} is run by user {2}, neither by root nor by you, so "
                            "nothing was sent. To use it anyway: --any-server"),
                         {path, std::to_string(*server)}));
}

/// Reads on to the end, or one byte more than is allowed. There can be an answer even if the
/// request could not be sent whole.
void readRest(std::streambuf& source, std::size_t longest, std::string& answer)
{
    std::array<char, 16384> piece;
    std::streamsize got = 1;
    while (got > 0 && answer.size() <= longest) {
        const std::size_t wanted = std::min(piece.size(), longest + 1 - answer.size());
        got = source.sgetn(piece.data(), static_cast<std::streamsize>(wanted));
        answer.append(piece.data(), static_cast<std::size_t>(got));
    }
}

/// Whether an answer is complete. If the service refuses a request before it has read all of it,
/// the connection is reset after the answer.
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
    FirstPiece first = receiveFirst(socket, longest, std::chrono::seconds(way.timeout));
    Reply reply;
    reply.bytes = std::move(first.bytes);
    reply.reasons = std::move(first.reasons);
    readRest(*stream.rdbuf(), longest, reply.bytes);
    if (reply.bytes.size() > longest) {
        return complain(kUnreadableAnswer,
                        fill(tr("the answer is longer than {} bytes, more than a good answer can "
                                "have"),
                             {std::to_string(longest)}));
    }
    if (!endsWhole(stream.error(), reply.bytes)) {
        return complainOf(stream.error(), way);
    }
    return reply;
}

} // namespace client
