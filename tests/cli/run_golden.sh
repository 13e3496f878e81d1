#!/usr/bin/env bash
# Runs one golden case of the tarn program. A case file holds:
#   # comment lines
#   needs: corpus   (the case reads $TARN_CORPUS, the shared folder of real
#                    files; without it the case is skipped with status 77)
#   setup: a shell line run first, which must succeed (any number)
#   command: the shell line whose output is checked
#   status: its expected exit status
#   stdout:
#   ...expected standard output, to the "stderr:" line...
#   stderr:
#   ...expected standard error, to the end...
# Commands run in a fresh directory with `tarn` on the PATH and the time
# zone and locale pinned; "today" is pinned by each command's --today.
# With TARN_GOLDEN_UPDATE=1 the case file is rewritten with what ran.
set -uo pipefail
tarn_binary=$1
case_file=$(realpath "$2")

work=$(mktemp -d)
trap 'rm -rf "$work"' EXIT
mkdir "$work/bin"
ln -s "$tarn_binary" "$work/bin/tarn"
export PATH="$work/bin:$PATH" TZ=UTC LC_ALL=C.UTF-8 LANG=C.UTF-8 TARN_DATA="$(dirname "$case_file")/../data"
unset TARN_PASSWORD COLUMNS NO_COLOR
export TARN_CORPUS="${TARN_CORPUS_DIR:-$(dirname "$case_file")/../../../shared/corpus}"

setups=() command="" status="" expected_out="" expected_err="" section="" needs=""
while IFS= read -r line || [[ -n "$line" ]]; do
  case "$section" in
    stdout) if [[ "$line" == "stderr:" ]]; then section=stderr; else expected_out+="$line"$'\n'; fi; continue ;;
    stderr) expected_err+="$line"$'\n'; continue ;;
  esac
  case "$line" in
    "#"*|"") ;;
    needs:*) needs="${line#needs: }" ;;
    setup:*) setups+=("${line#setup: }") ;;
    command:*) command="${line#command: }" ;;
    status:*) status="${line#status: }" ;;
    stdout:) section=stdout ;;
    *) echo "$case_file: unreadable line: $line" >&2; exit 2 ;;
  esac
done < "$case_file"
[[ -n "$command" && -n "$status" ]] || { echo "$case_file: needs command: and status:" >&2; exit 2; }

if [[ "$needs" == corpus && ! -d "$TARN_CORPUS" ]]; then
  echo "skipped: no corpus folder $TARN_CORPUS"
  exit 77
fi

cd "$work"
for setup in "${setups[@]}"; do
  bash -c "$setup" >/dev/null 2>setup.err || { echo "setup failed: $setup" >&2; cat setup.err >&2; exit 1; }
done
bash -c "$command" </dev/null >out.txt 2>err.txt
actual_status=$?

if [[ "${TARN_GOLDEN_UPDATE:-}" == 1 ]]; then
  {
    sed -n '/^stdout:$/q;p' "$case_file" | sed '/^status:/d'
    echo "status: $actual_status"
    echo "stdout:"
    cat out.txt
    echo "stderr:"
    cat err.txt
  } > "$case_file.new" && mv "$case_file.new" "$case_file"
  exit 0
fi

failed=0
if [[ "$actual_status" != "$status" ]]; then
  echo "exit status $actual_status, expected $status" >&2
  failed=1
fi
if ! diff -u <(printf '%s' "$expected_out") out.txt >&2; then echo "standard output differs" >&2; failed=1; fi
if ! diff -u <(printf '%s' "$expected_err") err.txt >&2; then echo "standard error differs" >&2; failed=1; fi
exit $failed
