#!/bin/sh
# SPDX-License-Identifier: MIT
#
# The pages for busybox httpd with a server for TLS, as cgi-bin/vokpage below httpd's folder. httpd does not
# know whether there is TLS; if there is none, remove the line.
export HTTPS=on
exec /usr/lib/vokcontrol/vokpage
