# Completion of kelvo-touchctl for fish.

function __kelvo_touchctl_candidates
    set --local words (commandline --current-process --tokenize --cut-at-cursor)
    set --local asked
    string match --quiet -- '-*' (commandline --current-token) && set asked --options
    $words[1] complete $asked -- $words[2..-1] 2>/dev/null
end

# Where there is nothing to offer, a file's name is meant.
complete --command kelvo-touchctl --no-files --condition 'count (__kelvo_touchctl_candidates) >/dev/null' \
    --arguments '(__kelvo_touchctl_candidates)'
