# fish completion for lumr

set -l commands show detect convert encode decode charsets
set -l begin "not __fish_seen_subcommand_from $commands"

function __lumr_charsets
    lumr charsets --lang en 2>/dev/null | awk 'NR > 1 { print tolower($2) }'
end

complete -c lumr -n $begin -f
complete -c lumr -n $begin -a show -d 'Print mail as readable text'
complete -c lumr -n $begin -a detect -d 'Detect the charset of files, and say why'
complete -c lumr -n $begin -a convert -d 'Convert text from one charset to another'
complete -c lumr -n $begin -a encode -d 'Encode bytes for mail'
complete -c lumr -n $begin -a decode -d 'Decode what was encoded for mail'
complete -c lumr -n $begin -a charsets -d 'List the charsets'
complete -c lumr -n $begin -l version -d 'Print the version and exit'

complete -c lumr -s h -l help -d 'Print help and exit'
complete -c lumr -l json -d 'Print one JSON object a line'
complete -c lumr -l lang -x -a 'ja en' -d 'Language of messages'

set -l convert '__fish_seen_subcommand_from convert'
complete -c lumr -n $convert -s f -l from -x -a '(__lumr_charsets)' -d 'Charset of the input'
complete -c lumr -n $convert -s t -l to -x -a '(__lumr_charsets)' -d 'Charset of the result'
complete -c lumr -n $convert -l in-place -d 'Write the result back to the file'
complete -c lumr -n $convert -l report -d 'Report what was not converted exactly'
complete -c lumr -n $convert -l strict -d 'Write nothing that would not convert back'

set -l encode '__fish_seen_subcommand_from encode'
complete -c lumr -n $encode -a 'base64 qp uu hex url imap'
complete -c lumr -n $encode -l wrap -x -d 'base64: characters a line'
complete -c lumr -n $encode -l binary -d 'qp: encode line breaks too'
complete -c lumr -n $encode -l all -d 'hex: encode letters and digits too'
complete -c lumr -n $encode -l name -x -d 'uu: file name'

complete -c lumr -n '__fish_seen_subcommand_from decode' -a 'base64 qp uu binhex hex url imap'
complete -c lumr -n '__fish_seen_subcommand_from charsets' -f
