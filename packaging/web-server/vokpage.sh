#!/bin/sh
# SPDX-License-Identifier: MIT
#
# The pages for busybox httpd behind a server for TLS, as cgi-bin/vokpage below httpd's folder. httpd
# does not know of the TLS; without it, remove the line.
export HTTPS=on
exec /usr/lib/vokcontrol/vokpage
