# What a person does with the freshly installed program: read by a shell inside the bare system (script/package --try).
export QT_QUICK_BACKEND=software XDG_RUNTIME_DIR=/tmp/person
mkdir -m 700 "$XDG_RUNTIME_DIR"
cd

for program in /usr/bin/morvane-proof /usr/libexec/morvane/*; do
    ! ldd "$program" | grep 'not found' || { echo "$program lacks libraries" >&2; exit 1; }
done
morvane --version
morvane-proof --version

# A turn with the practice server in the real window.
timeout 120 morvane --profile "$HOME/profile" --practice-server "$PRACTICE" --play-demo "$HOME/picture.png"
[ "$(stat -c %s picture.png)" -gt 20000 ] || { echo "The picture of the window is empty" >&2; exit 1; }
# The confined reader works as it was installed: it decodes that picture.
frames=$(/usr/libexec/morvane/morvane-extract image <picture.png | wc -c)
[ "$frames" -gt 1000 ] || { echo "The picture was not read" >&2; exit 1; }

# The window on the person's own profile opens, and ends when it is told to.
status=0
timeout --signal=TERM 20 morvane || status=$?
[ "$status" -eq 124 ] || { echo "The window did not stay open: $status" >&2; exit 1; }
