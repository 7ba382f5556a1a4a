#!/usr/bin/env bash
# bulk.sh QUILL SOURCE_FOLDER: the command of docs/bulk.md as it stands, on this machine, in batches of two. One job is
# killed while it writes, and the same command completes the stills without running the others again.
set -euo pipefail
source_folder=$2
folder=$(mktemp -d)
trap 'rm -rf "$folder"' EXIT
cd "$folder"
export QUILL_DEVICE=free-codec HOME=$folder QUILL_PROGRAM=$1 PATH=$folder/bin:$PATH

# The second job is killed once it has written a still.
mkdir bin photos
cat >bin/quill <<'SH'
#!/usr/bin/env bash
echo run >>runs
[ "$(wc -l <runs)" = 2 ] || exec "$QUILL_PROGRAM" "$@"
"$QUILL_PROGRAM" "$@" &
until [ -e stills/c.heic ] || ! kill -0 $!; do :; done
kill -KILL $! $$
SH
chmod +x bin/quill
for name in a b c 'd d' $'e\xe9' f; do cp "$source_folder/photos/compact-640x480-with-thumbnail.jpg" "photos/$name.jpg"; done
command=$(awk '/^```$/ { on = 0 } on && !/^hosts=/ { print } /^```sh/ { on = 1 }' "$source_folder/docs/bulk.md")
command=${command/-n 20/-n 2} hosts=:

! eval "$command" || { echo "the killed job is not reported" >&2; exit 1; }
[ "$(wc -l <runs)" = 3 ]
eval "$command"
[ "$(wc -l <runs)" = 4 ]
for name in a b c 'd d' $'e\xe9' f; do heif-info "stills/$name.heic" >/dev/null; done
