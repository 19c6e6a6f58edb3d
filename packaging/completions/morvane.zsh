#compdef morvane

_arguments -s \
    '(- *)'{-h,--help}'[say what the options do]' \
    '(- *)--help-all[the same, with the options that Qt adds]' \
    '(- *)'{-v,--version}'[say the version]' \
    '--new-chat[begin a new chat]' \
    '--new-ghost-chat[begin a new Ghost chat]' \
    '--ask[send this in a new chat]:text:' \
    '--background[begin in the tray, with no window]' \
    '--simulate-fresh-setup[set up the local model as if nothing were installed]' \
    '--reset-onboarding[show the welcome again]' \
    '--profile[keep everything in this folder]:folder:_files -/' \
    '--practice-server[chat with a practice server]:address:' \
    '--play-demo[play one turn, save a picture and end]:picture:_files -g "*.png"' \
    '*:file:_files -g "*.(txt|md|rtf|pdf|png|jpg|jpeg|webp|gif|bmp|tif|tiff)(-.)"'
