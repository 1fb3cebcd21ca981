# Completion of vesk's command line in fish.
# Put it into /usr/share/fish/vendor_completions.d, or into ~/.config/fish/completions.

function __vesk_complete
    set -l before (commandline -opc)
    set -l word (commandline -ct)
    # The word is as it is typed, with its quotes.
    set -l plain (string unescape -- $word)
    or set plain (string replace -ra '[\'"\\\\]' '' -- $word)
    set -l lines (vesk --complete $before[2..-1] "$plain" 2> /dev/null)
    if test (count $lines) -gt 0
        printf '%s\n' $lines
        return
    end
    set -l option (string match -r -- '^-[^=]*=' $plain)
    for path in (__fish_complete_path (string replace -- "$option" '' $plain))
        printf '%s%s\n' $option $path
    end
end

complete -c vesk -f -a '(__vesk_complete)'
