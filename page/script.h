// SPDX-License-Identifier: MIT
//
// script.h: what the module's functions print while a page is made. It is caught, so that headers
// can be sent after the work is done, and let into the page's script only as far as it is known to
// be harmless there.
#pragma once

#include <concepts>
#include <memory>
#include <string>
#include <string_view>

namespace page {

/// Collects what is printed to standard output, also by commands that are started meanwhile, for as
/// long as it lives.
class Capture {
  public:
    Capture();
    ~Capture();
    Capture(const Capture&) = delete;
    Capture& operator=(const Capture&) = delete;

    /// What has been printed by now.
    [[nodiscard]] std::string printed();

  private:
    int formerOutput_;
    int collected_;
};

/// Script that the module's functions printed. The functions this_page() and tov_hdds() stay as
/// they are, as long as they return a number and do nothing else; each other line becomes a comment
/// that no value can break out of, neither in script nor in markup.
class Script {
  public:
    /// Runs work that prints script.
    /// @return what it gives back
    template <std::invocable Work> auto run(Work work)
    {
        Capture capture;
        const Taker taker{*this, capture};
        return work();
    }

    void add(std::string_view printed);

    [[nodiscard]] const std::string& text() const { return text_; }

  private:
    /// Takes what was printed, however the work ends.
    struct Taker {
        Script& script;
        Capture& capture;
        ~Taker() { script.add(capture.printed()); }
    };

    std::string text_;
};

} // namespace page
