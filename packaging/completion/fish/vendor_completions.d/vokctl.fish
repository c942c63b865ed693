# SPDX-License-Identifier: MIT
#
# Completion for vokctl(1) in fish.

set -g __vokctl_helper (path resolve (status dirname)/../../vokcontrol/complete)

function __vokctl_complete
    set -l lines ($__vokctl_helper (commandline -opc) (commandline -ct) 2>/dev/null)
    if test "$lines[1]" = files
        __fish_complete_path (commandline -ct)
    else
        printf '%s\n' $lines | tail -n +2
    end
end

complete -c vokctl -f -a '(__vokctl_complete)'
