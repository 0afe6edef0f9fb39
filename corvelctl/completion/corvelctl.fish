# SPDX-License-Identifier: MIT
# Completion of corvelctl for fish; the program itself knows what may come next.
function __corvelctl_complete
    set -l words (commandline -opc)
    corvelctl __complete $words[2..-1] (commandline -ct) 2>/dev/null
end
complete -c corvelctl -a '(__corvelctl_complete)'
