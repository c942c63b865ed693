// SPDX-License-Identifier: MIT
//
// visits.h: what tests of pages do: visit one, in a root where the appliance's scripts are stubs.
#pragma once

#include <filesystem>
#include <string>
#include <string_view>

#include "page/administrators.h"
#include "page/pages.h"
#include "page/sessions.h"
#include "tests/support/root.h"

namespace visits {

inline const std::string kToken = "0123456789abcdef0123456789abcdef";

/// Nobody has logged in and no administrator has been made.
inline void clearKept()
{
    std::filesystem::remove_all(page::kKeptFolder);
    std::filesystem::create_directories("/var/lib");
    std::filesystem::remove_all(page::kStateFolder);
}

/// A page, and the script that came with it.
struct Made {
    std::string title;
    std::string body;
    std::string script;
};

inline page::Visitor administrator()
{
    return {.account = "anna",
            .isAdministrator = true,
            .hasSession = true,
            .mayBegin = false,
            .formToken = kToken};
}

inline page::Visitor nobody()
{
    page::Visitor visitor;
    visitor.formToken = kToken;
    return visitor;
}

/// What a page makes of itself for a visitor, whole.
inline page::Page makeFor(const page::Visitor& visitor, page::Page (*maker)(page::Visit&),
                          const page::Request& request, const config::Configuration& settings = {})
{
    page::Script script;
    page::Visit visit{request, settings, visitor, kToken, script};
    return maker(visit);
}

inline Made make(page::Page (*maker)(page::Visit&), const page::Request& request,
                 const page::Visitor& visitor = administrator(),
                 const config::Configuration& settings = {})
{
    page::Script script;
    page::Visit visit{request, settings, visitor, kToken, script};
    const page::Page made = maker(visit);
    return {made.title, made.body.text(), script.text()};
}

inline page::Request get()
{
    page::Request request;
    request.method = "GET";
    return request;
}

/// A form that has been sent.
inline page::Request post(std::string_view fields)
{
    page::Request request;
    request.method = "POST";
    request.form = page::Form(fields);
    return request;
}

/// Has the system script answer for each of its functions with what stands in /stubs/FUNCTION; it
/// keeps what it is told in /stubs/told, and fails for what stands in no file.
inline void stubSystemScript()
{
    root::stub("php", "case $2 in\n"
                      "tovGet*) cat \"/stubs/$2\" >\"$3\" ;;\n"
                      "*) echo \"$2 $3\" >>/stubs/told; [ ! -e \"/stubs/refuse-$2\" ] ;;\n"
                      "esac");
}

inline bool contains(const std::string& text, std::string_view part)
{
    return text.find(part) != std::string::npos;
}

} // namespace visits
