_morvane_proof() {
    local cur prev words cword
    _init_completion || return
    case $prev in
    --accepted) _filedir; return ;;
    --at | --nonce | --compose-hash | --instance-id | --rtmr3 | --model) return ;;
    --pin) mapfile -t COMPREPLY < <(compgen -W "intel-root= quoting-enclave= nvidia-root=" -- "$cur"); return ;;
    esac
    local options
    case ${words[1]} in
    quote) options="--hex --base64 --at" ;;
    gpu) options="--nonce --at" ;;
    replay) options="--compose-hash --instance-id --rtmr3" ;;
    document) options="--model --nonce --at --accepted" ;;
    export) options="--accepted" ;;
    esac
    if ((cword == 1)); then
        mapfile -t COMPREPLY < <(compgen -W "quote gpu replay document export --help --version" -- "$cur")
    elif [[ $cur == -* ]]; then
        mapfile -t COMPREPLY < <(compgen -W "$options --json --pin" -- "$cur")
    else
        _filedir
    fi
} && complete -F _morvane_proof morvane-proof
