# bash completion for lumr

_lumr() {
  local current=${COMP_WORDS[COMP_CWORD]} previous=${COMP_WORDS[COMP_CWORD - 1]}
  local command='' word
  for word in "${COMP_WORDS[@]:1:COMP_CWORD-1}"; do
    case $word in
      show | detect | convert | encode | decode | charsets) command=$word && break ;;
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
  esac

  if [[ $current == -* ]]; then
    local options='--help --json --lang'
    case $command in
      '') options+=' --version' ;;
      convert) options+=' --from --to --in-place --report --strict' ;;
      encode) options+=' --wrap --binary --all --name' ;;
    esac
    COMPREPLY=($(compgen -W "$options" -- "$current"))
  elif [[ -z $command ]]; then
    COMPREPLY=($(compgen -W 'show detect convert encode decode charsets' -- "$current"))
  elif [[ $command != charsets ]]; then
    compopt -o filenames 2>/dev/null
    COMPREPLY=($(compgen -f -- "$current"))
  fi
}

complete -F _lumr lumr
