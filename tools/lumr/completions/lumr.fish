# fish completion for lumr

set -l commands show reply compose check header grep detect convert encode decode charsets links wrap unwrap html address date settings users digest cipher
set -l begin "not __fish_seen_subcommand_from $commands"

function __lumr_charsets
    lumr charsets --lang en 2>/dev/null | awk 'NR > 1 { print tolower($2) }'
end

complete -c lumr -n $begin -f
complete -c lumr -n $begin -a show -d 'Print mail as readable text'
complete -c lumr -n $begin -a reply -d 'Write a reply to a message'
complete -c lumr -n $begin -a compose -d 'Write a message from a text'
complete -c lumr -n $begin -a check -d 'Check a draft before it is sent'
complete -c lumr -n $begin -a header -d 'Decode and encode header values'
complete -c lumr -n $begin -a detect -d 'Detect the charset of files, and say why'
complete -c lumr -n $begin -a convert -d 'Convert text from one charset to another'
complete -c lumr -n $begin -a encode -d 'Encode bytes for mail'
complete -c lumr -n $begin -a decode -d 'Decode what was encoded for mail'
complete -c lumr -n $begin -a charsets -d 'List the charsets'
complete -c lumr -n $begin -a grep -d 'Find words or a pattern in files and mail'
complete -c lumr -n $begin -a links -d 'List the links of a text'
complete -c lumr -n $begin -a wrap -d 'Turn the long lines of a text'
complete -c lumr -n $begin -a unwrap -d 'Join the lines that were turned'
complete -c lumr -n $begin -a html -d 'Make HTML safe, convert it to and from text'
complete -c lumr -n $begin -a address -d 'Check, take apart and build mail addresses'
complete -c lumr -n $begin -a date -d 'Read dates as mail has them'
complete -c lumr -n $begin -a settings -d 'Read, change and check setting data files'
complete -c lumr -n $begin -a users -d 'List and change the users of a mail client'
complete -c lumr -n $begin -a digest -d 'Compute MD5 and HMAC-MD5'
complete -c lumr -n $begin -a cipher -d 'Encipher and decipher data under a key'
complete -c lumr -n $begin -l version -d 'Print the version and exit'

complete -c lumr -s h -l help -d 'Print help and exit'
complete -c lumr -l json -d 'Print one JSON object a line'
complete -c lumr -l lang -x -a 'ja en' -d 'Language of messages'

complete -c lumr -n '__fish_seen_subcommand_from show' -l width -x -d 'Columns of a line'
complete -c lumr -n '__fish_seen_subcommand_from show' -l settings -r -d 'Settings of the editor'
complete -c lumr -n '__fish_seen_subcommand_from wrap unwrap' -s w -l width -x \
    -d 'Columns of a line'
complete -c lumr -n '__fish_seen_subcommand_from wrap' -l quote -x -d 'Mark before each line'
complete -c lumr -n '__fish_seen_subcommand_from wrap' -l explain -d 'Say why each line ends'
complete -c lumr -n '__fish_seen_subcommand_from links wrap unwrap' -s f -l from -x \
    -a '(__lumr_charsets)' -d 'Charset of the text'

set -l written '__fish_seen_subcommand_from reply compose check header'
complete -c lumr -n $written -l charset -x -a '(__lumr_charsets)' -d 'Charset'
complete -c lumr -n '__fish_seen_subcommand_from reply compose' -l from -x -d 'The sender'
set -l compose '__fish_seen_subcommand_from compose'
complete -c lumr -n $compose -l to -x -d 'Recipients'
complete -c lumr -n $compose -l cc -x -d 'Who gets a copy'
complete -c lumr -n $compose -l bcc -x -d 'Who gets a copy unseen by the others'
complete -c lumr -n $compose -l subject -x -d 'The subject'
complete -c lumr -n '__fish_seen_subcommand_from header' -f -a 'decode encode'
complete -c lumr -n '__fish_seen_subcommand_from header' -l kind -x -a 'b q' -d 'Kind of words'
complete -c lumr -n '__fish_seen_subcommand_from header' -l field -x -d 'Name of the field'
complete -c lumr -n '__fish_seen_subcommand_from header' -l name -d 'The name of an address'

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

set -l html safe text from-text charset lead links
set -l in_html '__fish_seen_subcommand_from html'
complete -c lumr -n "$in_html; and not __fish_seen_subcommand_from $html" -f -a "$html"
complete -c lumr -n "$in_html; and __fish_seen_subcommand_from safe" -l strict \
    -d 'Write only what lists allow'
complete -c lumr -n "$in_html; and __fish_seen_subcommand_from safe" -l report \
    -d 'Say what was removed'
complete -c lumr -n "$in_html; and __fish_seen_subcommand_from text" -l links \
    -d 'Keep link addresses'
complete -c lumr -n "$in_html; and __fish_seen_subcommand_from text" -l reading \
    -d 'Keep quotes, lists, ruby and tables'
complete -c lumr -n "$in_html; and __fish_seen_subcommand_from from-text" -l charset -x \
    -a '(__lumr_charsets)' -d 'Charset of the document'

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

set -l grep '__fish_seen_subcommand_from grep'
complete -c lumr -n $grep -s i -l ignore-case -d 'Ignore case'
complete -c lumr -n $grep -s w -l ignore-width -d 'Ignore character width'
complete -c lumr -n $grep -s k -l ignore-kana -d 'Take hiragana and katakana for the same'
complete -c lumr -n $grep -s e -l word -x -d 'A word to find'
complete -c lumr -n $grep -s E -l pattern -x -d 'A regular expression to find'
complete -c lumr -n $grep -l explain -x -d 'Print what a pattern is compiled to'
complete -c lumr -n $grep -l any -d 'Lines with any word'
complete -c lumr -n $grep -l all -d 'Lines with all words'
complete -c lumr -n $grep -s r -l recursive -d 'Search below folders'
complete -c lumr -n $grep -l mail -d 'Search mail'
complete -c lumr -n $grep -s f -l from -x -a '(__lumr_charsets)' -d 'Charset of the files'
complete -c lumr -n $grep -s n -l line-number -d 'Print line numbers'
complete -c lumr -n $grep -s b -l byte-offset -d 'Print offsets'
complete -c lumr -n $grep -s o -l only-matching -d 'Print the matches alone'
complete -c lumr -n $grep -s c -l count -d 'Print the number of lines'
complete -c lumr -n $grep -s l -l files-with-matches -d 'Print the names alone'
complete -c lumr -n $grep -l color -x -a 'auto always never' -d 'Colour matches'

set -l address check parse format split
set -l in_address '__fish_seen_subcommand_from address'
complete -c lumr -n "$in_address; and not __fish_seen_subcommand_from $address" -f -a "$address"
complete -c lumr -n "$in_address; and __fish_seen_subcommand_from check" -l as -x \
    -a 'address pattern name organization server account' -d 'What it is'
complete -c lumr -n "$in_address; and __fish_seen_subcommand_from format" -l plain \
    -d 'Put no quotes around the name'

set -l date '__fish_seen_subcommand_from date'
complete -c lumr -n $date -l format -x -a 'rfc5322 iso8601 ja unix' -d 'Form of the output'
complete -c lumr -n $date -l zone -x -d 'Print the time in this zone'
complete -c lumr -n $date -l missing-zone -x -d 'Zone of dates that give none'
complete -c lumr -n $date -l now -d 'The present time'
