#!/usr/bin/env bash
# completion.sh CLASS_PATH BASH_FILE ZSH_FILE: completions of quill for both shells, made by picocli. Its script makes words
# of file names where they have spaces, and runs what stands between backquotes in them: here they are taken line by line.
set -euo pipefail
java -cp "$1" picocli.AutoComplete --force -n quill -o "$2.new" com.quill.cli.Quill
files='COMPREPLY=(); while IFS= read -r file; do COMPREPLY+=("$file"); done < <(compgen -f -- "${curr_word}")'
sed -e 's/COMPREPLY=( \$( *compgen -f -- "\${curr_word}" *) )/'"${files//&/\\&}"'/' \
    -e '/^function _picocli_quill_/,/^}/s/COMPREPLY=( \$(compgen -W "\${commands} \${positionals}".*/'"${files//&/\\&}"'/' \
    -e '/positionals=\$( compgen/d' "$2.new" >"$2"
rm "$2.new"
{
    echo '#compdef quill'
    cat "$2"
    echo '(( $+functions[compopt] || $+builtins[compopt] )) || compopt() { :; }'
    echo '_bash_complete -o default -F _complete_quill'
} >"$3"
