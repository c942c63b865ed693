// SPDX-License-Identifier: MIT
#include "client/exchange.h"

#include "client/failure.h"
#include "cmdsvc/protocol.h"

namespace client {
namespace {

/// Fails where the service has no answer of the command's to give.
void checkServed(std::string_view bytes)
{
    const Answer answer = readAnswer(bytes);
    if (answer.shape != Shape::kStatus || answer.tag != cmdsvc::kServiceCode) {
        return;
    }
    ExitCode code = kUnreadableAnswer;
    if (answer.value == cmdsvc::kNotAdmitted) {
        code = kNotPermitted;
    } else if (answer.value == cmdsvc::kRequestTimedOut) {
        code = kNoAnswer;
    } else if (answer.value == cmdsvc::kRequestTooLong) {
        code = kWrongUsage;
    }
    throw Failure(code, refusalSentence(cmdsvc::kServiceCode, answer.value));
}

std::string send(const Connection& connection, const Request& request)
{
    const std::string line =
        request.line.empty() ? makeFrame(request.code, request.count) : request.line;
    const Reply reply = sendRequest(connection, line + request.parameters);
    if (reply.code != kGood) {
        throw Failure(reply.code, reply.complaint);
    }
    checkServed(reply.bytes);
    return reply.bytes;
}

/// Fails where an answer is a refusal.
void checkAccepted(const Request& request, const Answer& answer, std::uint32_t good = cmdsvc::kGood)
{
    const bool isWord = answer.shape == Shape::kWord && answer.value != good;
    const bool isStatus = answer.shape == Shape::kStatus && answer.value != good;
    if (isWord || isStatus || answer.shape == Shape::kError) {
        throw Failure(kRefused, refusalSentence(request.code, answer.value));
    }
    if (answer.trailingError) {
        throw Failure(kRefused, refusalSentence(request.code, *answer.trailingError));
    }
}

} // namespace

std::string parameterLine(const std::string& text)
{
    if (text.find_first_of(std::string_view("\n\0", 2)) != std::string::npos) {
        throw Failure(kWrongUsage, "a name or a value cannot hold a newline or a zero byte");
    }
    return text + "\n";
}

void askToDo(const Connection& connection, const Request& request, std::uint32_t good)
{
    const Answer answer = readAnswer(send(connection, request));
    checkAccepted(request, answer, good);
    if (answer.shape != Shape::kWord && answer.shape != Shape::kStatus) {
        failUnreadable(request, answer);
    }
}

Answer askForLines(const Connection& connection, const Request& request, std::string_view tag)
{
    Answer answer = readAnswer(send(connection, request));
    checkAccepted(request, answer);
    if (answer.shape != Shape::kHeader || answer.tag != tag) {
        failUnreadable(request, answer);
    }
    return answer;
}

std::string askForBytes(const Connection& connection, const Request& request,
                        std::string_view start)
{
    const std::string bytes = send(connection, request);
    if (bytes.starts_with(start)) {
        return bytes.substr(start.size());
    }
    const Answer answer = readAnswer(bytes);
    checkAccepted(request, answer);
    failUnreadable(request, answer);
}

void failUnreadable(const Request& request, const Answer& answer)
{
    throw Failure(kUnreadableAnswer,
                  "the answer cannot be read; it is " + describeAnswer(answer, request.code));
}

} // namespace client
