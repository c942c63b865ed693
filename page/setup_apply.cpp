// SPDX-License-Identifier: MIT
#include "page/setup_apply.h"

#include "core/languages.h"
#include "vokcontrol.h"

namespace page {
namespace {

/// Stores one thing after the other.
class Store {
  public:
    /// Calls a function of the system script.
    void call(const char* function, const std::string& value, const char* complaint)
    {
        note(::setSysVar(value.c_str(), function), complaint);
    }

    void keep(const char* variable, std::string_view value, const char* complaint)
    {
        note(::setvar(variable, std::string(value).c_str()), complaint);
    }

    [[nodiscard]] const std::vector<std::string>& failures() const { return failures_; }

  private:
    void note(int result, const char* complaint)
    {
        if (result != 0) {
            failures_.emplace_back(complaint);
        }
    }

    std::vector<std::string> failures_;
};

} // namespace

std::vector<std::string> applySetup(const SetupValues& values)
{
    Store store;
    store.call("tovSetLanguage", values.language, "The appliance did not take the language.");
    store.keep("language_current", core::findLanguageByName(values.language)->code,
               "The language could not be remembered.");
    store.call("tovSetHostname", values.hostName, "The appliance did not take the name.");
    store.call("tovSetNmbdSysname", values.hostName,
               "The appliance did not take the name for its shares.");
    store.keep("pel_pubshare_name", values.shareName,
               "The name of the public share could not be stored.");
    if (store.failures().empty()) {
        store.keep("firsttime", "0", "The end of the setup could not be stored.");
    }
    return store.failures();
}

} // namespace page
