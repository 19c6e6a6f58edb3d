#compdef morvane-proof

local -a common=(
    '--json[one object for machines]'
    '*--pin[for tests only: replace a pin]:pin:(intel-root= quoting-enclave= nvidia-root=)'
    ':file:_files'
)
local at='--at[the moment at which certificates must be valid]:date:'
local nonce='--nonce[the nonce that was sent]:64 hexadecimal characters:'
local accepted='--accepted[a list of accepted servers]:list:_files'

if ((CURRENT == 2)); then
    _describe command '(
        quote:"an Intel TDX quote"
        gpu:"the evidence of NVIDIA graphics chips"
        replay:"boot events"
        document:"the whole answer of a server"
        export:"the file that Settings > Proof exports"
        --help:"say everything at length"
        --version:"say the version"
    )'
    return
fi
local command=$words[2]
shift words
((CURRENT--))
case $command in
quote) _arguments $common $at '(--base64)--hex[written as text]' '(--hex)--base64[written as text]' ;;
gpu) _arguments $common $nonce $at ;;
replay)
    _arguments $common '--compose-hash[a live value]:hex:' '--instance-id[a live value]:hex:' \
        '--rtmr3[the register to arrive at]:hex:'
    ;;
document) _arguments $common '--model[the model that was asked for]:model:' $nonce $at $accepted ;;
export) _arguments $common $accepted ;;
esac
