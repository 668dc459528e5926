# fish completion for lumr

set -l commands show detect convert encode decode charsets settings users digest cipher
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
complete -c lumr -n $begin -a settings -d 'Read, change and check setting data files'
complete -c lumr -n $begin -a users -d 'List and change the users of a mail client'
complete -c lumr -n $begin -a digest -d 'Compute MD5 and HMAC-MD5'
complete -c lumr -n $begin -a cipher -d 'Encipher and decipher data under a key'
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

set -l settings get set unset list check diff encrypt decrypt
set -l in_settings '__fish_seen_subcommand_from settings'
complete -c lumr -n "$in_settings; and not __fish_seen_subcommand_from $settings" -f -a "$settings"
complete -c lumr -n "$in_settings; and __fish_seen_subcommand_from set" -l create -d 'Make the file'
complete -c lumr -n "$in_settings; and __fish_seen_subcommand_from set" -l reserve \
    -d 'Make a reserve copy'
complete -c lumr -n "$in_settings; and __fish_seen_subcommand_from encrypt decrypt" -s o -l output \
    -r -d 'Where to write'

set -l users list add remove password
set -l in_users '__fish_seen_subcommand_from users'
complete -c lumr -n "$in_users; and not __fish_seen_subcommand_from $users" -f -a "$users"
complete -c lumr -n "$in_users; and __fish_seen_subcommand_from add" -l id -x -d 'The ID'
complete -c lumr -n "$in_users; and __fish_seen_subcommand_from add" -l user-dir -r -d 'The folder'
complete -c lumr -n "$in_users; and __fish_seen_subcommand_from password" -l remove \
    -d 'Have no password'
complete -c lumr -n "$in_users; and __fish_seen_subcommand_from password" -l required \
    -d 'Ask at login'
complete -c lumr -n "$in_users; and __fish_seen_subcommand_from password" -l not-required \
    -d 'Do not ask at login'

complete -c lumr -n '__fish_seen_subcommand_from digest; and not __fish_seen_subcommand_from md5 hmac-md5' \
    -f -a 'md5 hmac-md5'
complete -c lumr -n '__fish_seen_subcommand_from cipher; and not __fish_seen_subcommand_from encrypt decrypt' \
    -f -a 'encrypt decrypt'
complete -c lumr -n '__fish_seen_subcommand_from settings users hmac-md5 cipher' -l key-file -r \
    -d 'File with the key'
