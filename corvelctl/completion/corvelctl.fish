# SPDX-License-Identifier: MIT
# Completion of corvelctl for fish; the program itself knows what may come next.
function __corvelctl_complete
    set -l words (commandline -opc)
    set -l typed (commandline -ct)
    # A quote that is still open is no part of the word.
    set -l word (string unescape -- "$typed"; or string replace -r '^["\']' '' -- "$typed")
    corvelctl __complete $words[2..-1] "$word" 2>/dev/null
    test $status -eq 1; and __fish_complete_path "$word"
end
complete -c corvelctl -f -a '(__corvelctl_complete)'
