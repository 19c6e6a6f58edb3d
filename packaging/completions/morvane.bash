_morvane() {
    local cur prev words cword
    _init_completion || return
    case $prev in
    --profile) _filedir -d; return ;;
    --play-demo) _filedir png; return ;;
    --practice-server | --ask) return ;;
    esac
    if [[ $cur == -* ]]; then
        mapfile -t COMPREPLY < <(compgen -W "--help --help-all --version --new-chat --new-ghost-chat --ask --background
            --simulate-fresh-setup --reset-onboarding --profile --practice-server --play-demo" -- "$cur")
        return
    fi
    _filedir '@(txt|md|rtf|pdf|png|jpg|jpeg|webp|gif|bmp|tif|tiff)'
} && complete -F _morvane morvane
