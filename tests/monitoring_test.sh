#!/usr/bin/env bash
# SPDX-License-Identifier: MIT
#
# usage: monitoring_test.sh [BUILD]
#
# The figures of three sample appliances in a real Prometheus, each through a node exporter of its own; and
# what docs/monitoring.md offers, judged by promtool. Needs prometheus and prometheus-node-exporter; nothing
# that runs already is touched, as all of them listen on free ports of 127.0.0.1.
set -euo pipefail
here=$(cd -- "$(dirname -- "${BASH_SOURCE[0]}")" && pwd)
# shellcheck source=tests/support/expect.sh
. "$here/support/expect.sh"
clone=${here%/*}
build=${1:-$clone/build/release}
folder=$(mktemp -d)
running=()
trap 'kill "${running[@]}" 2>/dev/null; wait 2>/dev/null; rm -rf "$folder"' EXIT

# port_of LOG: the port that a program listens on, as soon as its log has it.
port_of() {
    local port
    for _ in $(seq 600); do
        port=$(sed -n 's/.*[Ll]istening on.*127\.0\.0\.1:\([0-9]*\).*/\1/p' "$1" | head -n 1)
        if [ -n "$port" ]; then
            echo "$port"
            return 0
        fi
        sleep 0.1
    done
    echo "this does not listen:" >&2
    cat "$1" >&2
    return 1
}

# write_figures NAME FILES: the figures of a sample appliance that has so many files of 20 MB more.
write_figures() {
    mkdir "$folder/$1"
    # shellcheck disable=SC2016  # for the appliance's shell to expand
    "$clone/appliance/start" --build "$build" sh -c '
        for i in $(seq "$1"); do
            head -c 20000000 /dev/zero >"/share/Empty/more$i"
        done
        vokctl collect --wait 60 >/dev/null 2>&1
        vokctl metrics --output /tmp/vokcontrol.prom
        cat /tmp/vokcontrol.prom
    ' sh "$2" >"$folder/$1/vokcontrol.prom"
}

start_exporter() {
    prometheus-node-exporter --collector.disable-defaults --collector.textfile \
        --collector.textfile.directory="$folder/$1" --web.listen-address=127.0.0.1:0 2>"$folder/$1.log" &
    running+=($!)
    ports+=("$(port_of "$folder/$1.log")")
}

# ask EXPRESSION: the labels and values of the answer, a line each.
ask() {
    promtool query instant "http://127.0.0.1:$prometheus" "$1" | sed 's/ @\[.*//'
}

monitoring=$clone/packaging/monitoring
expect 'the configuration is one' 0 "$(promtool check config "$monitoring/prometheus.yml" >&2 && echo $?)"
expect 'each alert rule does what it says' 0 "$(promtool test rules "$monitoring/alerts_test.yml" >&2 && echo $?)"

ports=()
number=0
for name in attic cellar office; do
    number=$((number + 1))
    write_figures "$name" $((number % 3))
    expect "$name: the figures are as they should be" '' \
        "$(promtool check metrics <"$folder/$name/vokcontrol.prom" 2>&1)"
    start_exporter "$name"
done

{
    printf 'global: {scrape_interval: 1s}\nscrape_configs:\n  - job_name: appliances\n    static_configs:\n'
    for i in 0 1 2; do
        name=$(echo attic cellar office | cut -d ' ' -f $((i + 1)))
        printf '      - {targets: ["127.0.0.1:%s"], labels: {appliance: %s}}\n' "${ports[i]}" "$name"
    done
} >"$folder/prometheus.yml"
prometheus --config.file="$folder/prometheus.yml" --storage.tsdb.path="$folder/data" \
    --web.listen-address=127.0.0.1:0 2>"$folder/prometheus.log" &
running+=($!)
prometheus=$(port_of "$folder/prometheus.log")
for _ in $(seq 600); do
    [ "$(ask 'count(vokcontrol_capacity_bytes)' 2>/dev/null)" != '{} => 3' ] || break
    sleep 0.1
done

expect 'Prometheus has all three' '{} => 3' "$(ask 'count(vokcontrol_capacity_bytes)')"
expect 'no exporter has refused a file' '{} => 0' "$(ask 'sum(node_textfile_scrape_error)')"
expect 'the fullest is the one with most in it' '{appliance="cellar"}' \
    "$(ask 'topk(1, sum by (appliance) (vokcontrol_share_used_bytes))' | sed 's/ =>.*//')"
expect 'each of its shares is there' "$(grep -c '^vokcontrol_share_used_bytes' "$folder/cellar/vokcontrol.prom")" \
    "$(ask 'vokcontrol_share_used_bytes{appliance="cellar"}' | wc -l)"

finish
