# bash completion for lumr

_lumr() {
  local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]}
  local command='' sub='' word
  for word in "${COMP_WORDS[@]:1:COMP_CWORD-1}"; do
    case $command:$word in
      :show | :reply | :compose | :check | :detect | :convert | :encode | :decode | :charsets | :grep | :links | :wrap | :unwrap) command=$word ;;
      :address | :date | :header | :html | :settings | :users | :digest | :cipher) command=$word ;;
      address:* | header:* | html:* | settings:* | users:* | digest:* | cipher:*) [[ $word == -* || -n $sub ]] || sub=$word ;;
    esac
  done

  case $previous in
    --lang)
      COMPREPLY=($(compgen -W 'ja en' -- "$current"))
      return
      ;;
    -f | --from | -t | --to)
      COMPREPLY=($(compgen -W "$(lumr charsets --lang en 2>/dev/null |
        awk 'NR > 1 { print tolower($2) }')" -- "$current"))
      return
      ;;
    encode)
      COMPREPLY=($(compgen -W 'base64 qp uu hex url imap' -- "$current"))
      return
      ;;
    decode)
      COMPREPLY=($(compgen -W 'base64 qp uu binhex hex url imap' -- "$current"))
      return
      ;;
    --as)
      COMPREPLY=($(compgen -W 'address pattern name organization server account' -- "$current"))
      return
      ;;
    --format)
      COMPREPLY=($(compgen -W 'rfc5322 iso8601 ja unix' -- "$current"))
      return
      ;;
    --key-file | -o | --output)
      compopt -o filenames 2>/dev/null
      COMPREPLY=($(compgen -f -- "$current"))
      return
      ;;
    --user-dir)
      compopt -o filenames 2>/dev/null
      COMPREPLY=($(compgen -d -- "$current"))
      return
      ;;
  esac
  if [[ -z $sub && $current != -* ]]; then
    local subs=''
    case $command in
      html) subs='safe text from-text charset lead links' ;;
      address) subs='check parse format split' ;;
      header) subs='decode encode' ;;
      settings) subs='get set unset list check diff encrypt decrypt' ;;
      users) subs='list add remove password' ;;
      digest) subs='md5 hmac-md5' ;;
      cipher) subs='encrypt decrypt' ;;
    esac
    if [[ -n $subs ]]; then
      COMPREPLY=($(compgen -W "$subs" -- "$current"))
      return
    fi
  fi

  if [[ $current == -* ]]; then
    local options='--help --json --lang'
    case $command:$sub in
      :) options+=' --version' ;;
      address:check) options+=' --as' ;;
      address:format) options+=' --plain' ;;
      date:) options+=' --format --zone --missing-zone --now' ;;
      html:safe) options+=' --strict --report' ;;
      html:text) options+=' --links --reading' ;;
      html:from-text) options+=' --charset' ;;
      reply:) options+=' --from --charset' ;;
      compose:) options+=' --from --to --cc --bcc --subject --charset' ;;
      check:) options+=' --charset' ;;
      header:decode) options+=' --charset' ;;
      header:encode) options+=' --charset --kind --field --name' ;;
      settings:set) options+=' --key-file --create --reserve' ;;
      settings:encrypt | settings:decrypt) options+=' --key-file --output' ;;
      users:add) options+=' --key-file --id --user-dir' ;;
      users:password) options+=' --key-file --remove --required --not-required' ;;
      settings:?* | users:?* | cipher:?* | digest:hmac-md5) options+=' --key-file' ;;
      convert:) options+=' --from --to --in-place --report --strict' ;;
      grep:) options+=' --ignore-case --ignore-width --ignore-kana --word --pattern --explain --any
        --all --recursive --mail --from --line-number --byte-offset --only-matching --count
        --files-with-matches --color' ;;
      links:) options+=' --from' ;;
      show:) options+=' --width --settings' ;;
      wrap:) options+=' --width --from --quote --explain' ;;
      unwrap:) options+=' --width --from' ;;
      encode:) options+=' --wrap --binary --all --name' ;;
    esac
    COMPREPLY=($(compgen -W "$options" -- "$current"))
  elif [[ -z $command ]]; then
    COMPREPLY=($(compgen -W "show reply compose check header grep detect convert encode decode charsets links wrap unwrap
      address date html settings users digest cipher" -- "$current"))
  elif [[ $command == users ]]; then
    compopt -o filenames 2>/dev/null
    COMPREPLY=($(compgen -d -- "$current"))
  elif [[ $command != charsets ]]; then
    compopt -o filenames 2>/dev/null
    COMPREPLY=($(compgen -f -- "$current"))
  fi
}

complete -F _lumr lumr
