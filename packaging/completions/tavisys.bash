# Completion of tavisys for bash. What may stand where is known to the program itself.
_tavisys() {
    local words=("${COMP_WORDS[@]:1:COMP_CWORD}") current=${COMP_WORDS[COMP_CWORD]} candidate
    local IFS=$'\n'
    words=("${words[@]//[\\\"\']/}") # what quotes stands for itself, as far as names go
    COMPREPLY=()
    for candidate in $("${COMP_WORDS[0]}" complete -- "${words[@]}" 2>/dev/null); do
        case $candidate in
        :files | :folders)
            compopt -o filenames 2>/dev/null
            [ "$candidate" = :files ] && candidate=-f || candidate=-d
            COMPREPLY+=($(compgen "$candidate" -- "$current"))
            ;;
        :hosts) COMPREPLY+=($(compgen -A hostname -- "$current")) ;;
        *[\ \\\"\'\$\`\&\|\;\<\>\(\)\*\?\[\]\{\}\#\!\~]*) COMPREPLY+=("$(printf '%q' "$candidate")") ;;
        *) COMPREPLY+=("$candidate") ;;
        esac
    done
}
complete -F _tavisys tavisys
