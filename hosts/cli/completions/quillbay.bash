# Completion of quillbay's command line for bash. The program itself says what can follow.

_quillbay() {
  # Bash breaks words at ':' and '=' too: put together what no blank separates.
  local line=${COMP_LINE:0:COMP_POINT} words=() index trimmed word
  for ((index = 0; index <= COMP_CWORD; index++)); do
    trimmed=${line#"${line%%[![:space:]]*}"}
    word=${COMP_WORDS[index]}
    ((index == COMP_CWORD)) && word=$trimmed
    if ((index > 0)) && [[ $trimmed == "$line" ]]; then
      words[-1]+=$word
    else
      words+=("$word")
    fi
    line=${trimmed#"$word"}
  done

  local reply candidate
  mapfile -t reply < <("$1" complete -- "${words[@]:1}" 2>/dev/null)
  if [[ ${reply[0]} == files ]]; then
    compopt -o default
    return
  fi

  # Bash replaces only what follows the last ':' or '='.
  local typed=${words[-1]} breaks=${COMP_WORDBREAKS//[^:=]/} kept=
  [[ -n $breaks && $typed == *[$breaks]* ]] && kept=${typed%"${typed##*[$breaks]}"}
  for candidate in "${reply[@]:1}"; do
    candidate=${candidate%%$'\t'*}
    printf -v candidate %q "${candidate#"$kept"}"
    COMPREPLY+=("$candidate")
  done
}

complete -F _quillbay quillbay
