# Completion of the command line of morvaltide in bash.

# Adds the folders, and the files whose name matches the pattern, that begin
# with the word at the cursor.
_morvaltide_files()
{
    local pattern=$1 name
    local word=${2//\\/}
    word=${word#[\'\"]}
    compopt -o filenames 2> /dev/null
    while IFS= read -r name; do
        if [[ -d ${name/#\~\//$HOME/} || ${name,,} =~ $pattern ]]; then
            COMPREPLY+=("$name")
        fi
    done < <(compgen -f -- "$word")
}

_morvaltide_words()
{
    mapfile -t COMPREPLY < <(compgen -W "$1" -- "$2")
}

_morvaltide()
{
    local documents='\.(pdf|tif|tiff|jpg|jpeg|png)$'
    local word=${COMP_WORDS[COMP_CWORD]}
    local option=${COMP_WORDS[COMP_CWORD - 1]}
    # Bash takes "--resolution=fine" for three words.
    if [[ $word == "=" ]]; then
        word=
    elif [[ $option == "=" ]]; then
        option=${COMP_WORDS[COMP_CWORD - 2]}
    fi
    COMPREPLY=()

    local i
    for ((i = 1; i < COMP_CWORD; ++i)); do
        if [[ ${COMP_WORDS[i]} == -- ]]; then
            _morvaltide_files "$documents" "$word"
            return
        fi
    done

    case $option in
        -p | --paper-size) _morvaltide_words "a4 letter legal" "$word" ;;
        -r | --resolution) _morvaltide_words "standard fine superfine ultrafine" "$word" ;;
        -R | --rotation) _morvaltide_words "0 90 180 270 -90 -180 -270" "$word" ;;
        -t | --transformation) _morvaltide_words "fittopaper" "$word" ;;
        -m | --margins) ;; # any numbers
        -c | --compression) _morvaltide_words "g3 g4" "$word" ;;
        -C | --cover-page) _morvaltide_files '\.html$' "$word" ;;
        -o | --output-file) _morvaltide_files '\.(tif|tiff)$' "$word" ;;
        *)
            if [[ $word == -* ]]; then
                _morvaltide_words "-h --help -v --version -p --paper-size -r --resolution
                    -R --rotation -t --transformation -m --margins -c --compression
                    -C --cover-page -o --output-file" "$word"
            else
                _morvaltide_files "$documents" "$word"
            fi
            ;;
    esac
}

complete -F _morvaltide morvaltide
