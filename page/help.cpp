// SPDX-License-Identifier: MIT
//
// What the messages of the pages mean, and what to do. docs/troubleshooting.md has more of them,
// for whoever looks after the appliance.
#include <array>

#include "page/layout.h"
#include "page/pages.h"
#include "text/translation.h"

namespace page {
namespace {

using text::mark;
using text::tr;

struct Remedy {
    const char* message;
    const char* cause;
    const char* advice;
};

constexpr auto kRemedies = std::to_array<Remedy>({
    {mark("The appliance's service does not answer. Try again in a minute."),
     mark("The service is not running, or is just being started."),
     mark("Wait a minute. If that does not help, restart the appliance, or start the service by "
          "hand: systemctl start vokserve.socket")},
    {mark("The appliance's service has not answered in time. What you asked for may have been done "
          "all the same: look before you repeat it."),
     mark("The service is busy with something that takes long."),
     mark("Look at the list of shares or users, then try again.")},
    {mark("The appliance did not get ready in time. What you asked for may be done in part."),
     mark("The page took more than 30 seconds."), mark("Look at what was done, then try again.")},
    {mark("There were wrong passwords. Wait {} s, then try again."),
     mark("After each wrong password the wait is twice as long, at most 64 s."),
     mark("Wait, then type name and password with care.")},
    {mark("You are not logged in, or your login has ended. Nothing was changed. Log in and repeat "
          "what you did."),
     mark("A login ends after 30 minutes without a click, and after 12 hours at the latest."),
     mark("Log in again.")},
    {mark("Only an administrator may do this."), mark("Your account may look, but change nothing."),
     mark("Ask an administrator. To make your account one, name it under \"administrators\" in the "
          "section [pages] of /etc/vokcontrol.conf.")},
    {mark("The appliance does not go by this name. Use its own name or its address."),
     mark("The browser's address bar has a name that the appliance does not know."),
     mark("Use the appliance's own name or its address, or add the name to \"hosts\" in the "
          "section [pages] of /etc/vokcontrol.conf.")},
    {mark("Your browser says that this form does not come from a page of this appliance. Nothing "
          "was changed."),
     mark("Another site has sent the form, or a proxy changes the address."),
     mark("Open the page again at the appliance's own address.")},
    {mark("The appliance's settings cannot be read, so nothing was done. The web server's log "
          "tells what has to be corrected."),
     mark("A line of /etc/vokcontrol.conf is not understood."),
     mark("The web server's log has the number of the line. Correct it.")},
    {mark("The last collection was interrupted."),
     mark("The power failed while the shares were measured, or the program was ended."),
     mark("Wait: another collection can start after two hours at most.")},
});

Html remedy(const Remedy& row)
{
    return Html() << "<div><dt>" << Text{text::fill(tr(row.message), {"\u2026"})} << "</dt>\n<dd>"
                  << Text{tr(row.cause)} << "</dd>\n<dd>" << Text{tr(row.advice)}
                  << "</dd></div>\n";
}

} // namespace

Page makeHelp(Visit& /*visit*/)
{
    Page page;
    page.title = tr("Troubleshooting");
    page.body << R"(<section class="card" aria-labelledby="messages">
<h2 id="messages">)"
              << Text{tr("What the messages mean")} << "</h2>\n<dl class=\"remedies\">\n";
    for (const Remedy& row : kRemedies) {
        page.body << remedy(row);
    }
    page.body
        << "</dl>\n</section>\n"
        << R"(<section class="card" aria-labelledby="logs">
<h2 id="logs">)"
        << Text{tr("Where to look for more")} << "</h2>\n<p>"
        << Text{tr("The web server's error log has what the pages did. \"journalctl -u vokserve\" "
                   "prints the service's log; without systemd it is /var/log/vokserve.log. "
                   "\"vokctl doctor\" checks the whole appliance.")}
        << "</p>\n</section>\n";
    return page;
}

} // namespace page
