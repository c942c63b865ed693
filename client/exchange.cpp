// SPDX-License-Identifier: MIT
#include "client/exchange.h"

#include "client/failure.h"
#include "text/translation.h"
#include "view/sentences.h"

namespace client {
namespace {

/// The exit code of vokctl for a status of the service.
ExitCode exitCodeOf(cmdsvc::Status status)
{
    switch (status) {
    case cmdsvc::kNotAdmitted:
        return kNotPermitted;
    case cmdsvc::kRequestTimedOut:
        return kNoAnswer;
    case cmdsvc::kRequestTooLong:
        return kWrongUsage;
    default:
        return kUnreadableAnswer;
    }
}

/// The longest answer of a command, including its refusals.
std::size_t longestAnswer(const cmdsvc::Command& command)
{
    // A command can answer two status codes.
    constexpr std::size_t kLongestCodes = 2 * cmdsvc::kHeaderSize;
    switch (command.answer.shape) {
    case cmdsvc::AnswerShape::kNone:
    case cmdsvc::AnswerShape::kWord:
    case cmdsvc::AnswerShape::kStatus:
        return kLongestCodes;
    case cmdsvc::AnswerShape::kHeader:
    case cmdsvc::AnswerShape::kBytes:
        break;
    }
    return (command.code == cmdsvc::command("gpvt").code) ? kLongestAnswer : kLongestTextAnswer;
}

[[noreturn]] void failRefused(const cmdsvc::Command& command, cmdsvc::Status status,
                              const std::string& reasons)
{
    throw Refused(kRefused, command.code, status, view::refusalSentence(command.code, status),
                  reasons);
}

} // namespace

Answer acceptAnswer(const cmdsvc::Command& command, std::string_view bytes,
                    const std::string& reasons)
{
    Answer answer = readAnswer(command, bytes);
    switch (answer.verdict) {
    case Verdict::kGood:
        return answer;
    case Verdict::kRefused:
        failRefused(command, answer.status, reasons);
    case Verdict::kNotServed:
        throw Refused(exitCodeOf(answer.status), cmdsvc::kServiceCode, answer.status,
                      view::refusalSentence(cmdsvc::kServiceCode, answer.status), reasons);
    case Verdict::kEmpty:
    case Verdict::kUnreadable:
        break;
    }
    failUnreadable({command}, answer);
}

Answer ask(const Connection& connection, const Request& request)
{
    const Reply reply = sendRequest(connection, makeFrame(request.command, request.values),
                                    longestAnswer(request.command));
    if (reply.code != kGood) {
        throw Failure(reply.code, reply.complaint);
    }
    return acceptAnswer(request.command, reply.bytes, reply.reasons);
}

void askToDo(const Connection& connection, const Request& request)
{
    static_cast<void>(ask(connection, request));
}

Listing askForLines(const Connection& connection, const Request& request)
{
    Answer answer = ask(connection, request);
    TextLines body = readLines(request.command, answer.body);
    if (body.error) {
        failRefused(request.command, *body.error, {});
    }
    return {std::move(answer), std::move(body.lines)};
}

std::string askForBytes(const Connection& connection, const Request& request,
                        std::string_view start)
{
    const Answer answer = ask(connection, request);
    if (!answer.body.starts_with(start)) {
        failUnreadable(request, answer);
    }
    return answer.body.substr(start.size());
}

void failUnreadable(const Request& request, const Answer& answer)
{
    throw Failure(kUnreadableAnswer, text::fill(text::tr("the answer cannot be read: {}"),
                                                {describeAnswer(request.command, answer)}));
}

} // namespace client
