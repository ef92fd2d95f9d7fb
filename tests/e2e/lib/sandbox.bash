# Throw-away sandboxes of the whole machine for the end-to-end suites.
#
# A sandbox is an overlay whose lower layer is the host's "/" and whose upper layer is a
# scratch directory. Every command gets a fresh private mount namespace in which the
# overlay is mounted, /dev bound in, /proc mounted and a private /tmp bound over /tmp, and
# then runs chrooted into the merged tree. The upper layer and the private /tmp outlive the
# namespace, so the state of one test builds up from command to command, while the host
# sees none of it.
#
# Usage in a suite:
#
#   load lib/sandbox
#   setup()    { sandbox_setup; }
#   teardown() { sandbox_teardown; }
#
#   @test "..." {
#     sandbox_install_test_lang
#     sandbox_run 'LANG=T zet --help --no-colors'
#     expect_status 0
#     expect_stdout_line 'HelpZet 1.0rc1'
#   }
#
# Each sandbox starts as a fresh machine with this build installed: /usr/local/sbin/zet and
# its three other names, /usr/share/zet/lang and /lib/zetutils, and no /etc/zet.conf.
#
# Environment: ZET_BUILD_DIR and ZET_SOURCE_DIR name the build and source trees (CTest
# sets them). ZET_KEEP_SANDBOX=1 keeps the sandbox of a failed test for inspection.
# CI=true turns a missing sandbox (not root, no mount) into a failure instead of a skip.

# The only variable that a command inside gets unless it sets its own.
SANDBOX_PATH=/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin

# The identity of the non-root runs.
SANDBOX_USER_ID=65534

# --- Set-up and tear-down ---------------------------------------------------------------

# A test that cannot have a sandbox fails in CI and is skipped elsewhere, with the reason.
sandbox_unavailable() {
  if [[ "${CI:-}" == true ]]; then
    echo "sandbox unavailable: $1" >&2
    return 1
  fi
  skip "sandbox unavailable: $1"
}

sandbox_fail() {
  printf '%s\n' "$@" >&2
  return 1
}

sandbox_setup() {
  : "${ZET_BUILD_DIR:?ZET_BUILD_DIR must name the build directory}"
  : "${ZET_SOURCE_DIR:?ZET_SOURCE_DIR must name the source directory}"
  [[ -x "$ZET_BUILD_DIR/zet" ]] || sandbox_fail "no program to test: $ZET_BUILD_DIR/zet" || return 1

  [[ "$(id -u)" == 0 ]] || { sandbox_unavailable "the sandbox needs root, running as uid $(id -u)"; return 1; }
  local tool
  for tool in unshare mount chroot setpriv; do
    command -v "$tool" >/dev/null || { sandbox_unavailable "'$tool' is not installed"; return 1; }
  done

  SANDBOX=$(mktemp -d "${TMPDIR:-/tmp}/e2e-sandbox.XXXXXX")
  mkdir "$SANDBOX/upper" "$SANDBOX/work" "$SANDBOX/merged" "$SANDBOX/tmp"
  chmod 1777 "$SANDBOX/tmp"
  : >"$SANDBOX/stdin"
  SB_STDOUT=$SANDBOX/stdout
  SB_STDERR=$SANDBOX/stderr

  # Probe: can a namespace with the overlay be made at all here?
  if ! _sandbox_exec root "$SANDBOX/stdin" "$SANDBOX/probe.out" "$SANDBOX/probe.err" true; then
    sandbox_unavailable "cannot mount the overlay: $(cat "$SANDBOX/machinery.log" 2>/dev/null)"
    return 1
  fi

  # The build is installed from inside the chroot, with the build and source trees bound
  # in at their own paths: every path of the installation then resolves as on a real
  # machine, and no link in the host's tree (such as /lib -> usr/lib) can lead it out of
  # the sandbox, as a DESTDIR pointing into the merged tree could.
  _sandbox_exec install "$SANDBOX/stdin" "$SANDBOX/install.log" "$SANDBOX/install.log" \
    "cmake --install '$ZET_BUILD_DIR' && rm -f /etc/zet.conf" || {
    sandbox_fail "cannot run the installation in the sandbox: $(cat "$SANDBOX/machinery.log")"
    return 1
  }
  [[ "$(cat "$SANDBOX/status")" == 0 ]] ||
    sandbox_fail "installing the build into the sandbox failed:" "$(cat "$SANDBOX/install.log")" ||
    return 1
}

sandbox_teardown() {
  [[ -n "${SANDBOX:-}" && -d "$SANDBOX" ]] || return 0
  if [[ -z "${BATS_TEST_COMPLETED:-}" && -z "${BATS_TEST_SKIPPED:-}" &&
        "${ZET_KEEP_SANDBOX:-}" == 1 ]]; then
    echo "# sandbox kept: upper layer $SANDBOX/upper, /tmp $SANDBOX/tmp," \
      "last output $SB_STDOUT and $SB_STDERR" >&3
    return 0
  fi
  # The namespaces are gone with their processes; never delete through a live mount.
  if grep -q " $SANDBOX/" /proc/self/mounts; then
    echo "sandbox still mounted, left in place: $SANDBOX" >&2
    return 1
  fi
  rm -rf "$SANDBOX"
}

# --- Running commands -------------------------------------------------------------------

# _sandbox_exec MODE STDIN OUT ERR CMDLINE
# MODE is root, user (uid and gid 65534, no groups) or install (root, with the build and
# source trees bound in, and the host's /tmp in place of the private one). The command line runs with "sh -c" in "/" with an empty
# environment but PATH. Its exit status lands in $SANDBOX/status. Returns non-zero only
# when the sandbox itself could not be entered; the reason is in $SANDBOX/machinery.log.
_sandbox_exec() {
  local mode=$1 input=$2 out=$3 err=$4 cmdline=$5
  rm -f "$SANDBOX/entered" "$SANDBOX/status"
  unshare --mount --propagation private -- /bin/bash -c '
    set -eu
    sb=$1 mode=$2 input=$3 out=$4 err=$5 cmdline=$6 path=$7 uid=$8 build=$9 source=${10}
    m=$sb/merged
    mount -t overlay overlay -o "lowerdir=/,upperdir=$sb/upper,workdir=$sb/work" "$m"
    mount --rbind /dev "$m/dev"
    mount -t proc proc "$m/proc"
    if [ "$mode" = install ]; then
      # Mount points for trees under /tmp stay in the upper layer, under the private /tmp
      # of the other runs.
      for dir in "$source" "$build"; do
        mkdir -p "$m$dir"
        mount --rbind "$dir" "$m$dir"
      done
    else
      mount --bind "$sb/tmp" "$m/tmp"
    fi
    grep -q " $m overlay " /proc/self/mounts
    : >"$sb/entered"
    as_user=
    [ "$mode" = user ] && as_user="/usr/bin/setpriv --reuid=$uid --regid=$uid --clear-groups"
    set +e
    chroot "$m" $as_user /usr/bin/env -i "PATH=$path" /bin/sh -c "cd / && $cmdline" \
      <"$input" >"$out" 2>"$err"
    echo $? >"$sb/status"
  ' sandbox "$SANDBOX" "$mode" "$input" "$out" "$err" "$cmdline" "$SANDBOX_PATH" \
    "$SANDBOX_USER_ID" "$ZET_BUILD_DIR" "$ZET_SOURCE_DIR" 2>"$SANDBOX/machinery.log" || true
  [[ -e "$SANDBOX/entered" && -s "$SANDBOX/status" ]]
}

# sandbox_run [--user] CMDLINE
# Runs a shell command line inside the sandbox, as root or, with --user, as an unprivileged
# user. Sets "status"; standard output and standard error land apart in $SB_STDOUT and
# $SB_STDERR, and, byte for byte with their line ends, in "stdout" and "stderr". Nothing is
# passed from the test's environment: a command that needs LANG sets it, as in
# 'LANG=T zet -h'.
sandbox_run() {
  local mode=root
  if [[ "$1" == --user ]]; then
    mode=user
    shift
  fi
  _sandbox_exec "$mode" "$SANDBOX/stdin" "$SB_STDOUT" "$SB_STDERR" "$1" ||
    sandbox_fail "could not enter the sandbox to run: $1" "$(cat "$SANDBOX/machinery.log")" ||
    return 1
  status=$(cat "$SANDBOX/status")
  _read_bytes stdout "$SB_STDOUT"
  _read_bytes stderr "$SB_STDERR"
  SB_LAST_COMMAND=$1
}

# A helper's own run, which leaves the last command's status and output alone.
_sandbox_check() {
  _sandbox_exec root "${2:-$SANDBOX/stdin}" "$SANDBOX/check.out" "$SANDBOX/check.err" "$1" ||
    sandbox_fail "could not enter the sandbox to run: $1" "$(cat "$SANDBOX/machinery.log")" ||
    return 1
}

# --- Running commands in a terminal -----------------------------------------------------
# A full-screen program needs a terminal: these run one command in a detached tmux session
# of a server of the sandbox's own, so that a test can read the screen and type.

_sandbox_tmux() {
  tmux -f /dev/null -S "$SANDBOX/tmux.sock" "$@"
}

# sandbox_tmux_start CMDLINE
# Starts a shell command line inside the sandbox, as root, in a terminal of 80 by 25
# characters with TERM=screen; the terminal is its standard input, output and error. Returns
# at once. Its exit status lands in $SANDBOX/status when it ends: wait with
# sandbox_tmux_wait_end, and run no other sandbox command in the meantime.
sandbox_tmux_start() {
  command -v tmux >/dev/null || { sandbox_unavailable "'tmux' is not installed"; return 1; }
  rm -f "$SANDBOX/status"
  _sandbox_tmux new-session -d -x 80 -y 25 /bin/bash -c '
    source "$1"
    SANDBOX=$2 ZET_BUILD_DIR=$3 ZET_SOURCE_DIR=$4
    _sandbox_exec root /dev/stdin /dev/stdout /dev/stdout "export TERM=screen; $5"
  ' sandbox "${BASH_SOURCE[0]}" "$SANDBOX" "$ZET_BUILD_DIR" "$ZET_SOURCE_DIR" "$1" ||
    sandbox_fail "cannot start a terminal for: $1"
  SB_LAST_COMMAND=$1
}

# sandbox_tmux_screen: the text on the terminal now, into "screen".
sandbox_tmux_screen() {
  screen=$(_sandbox_tmux capture-pane -p 2>/dev/null)
}

# sandbox_tmux_wait_for TEXT: polls the screen until it shows TEXT, for at most 20 seconds.
sandbox_tmux_wait_for() {
  local tries
  for ((tries = 0; tries < 100; tries++)); do
    sandbox_tmux_screen
    [[ "$screen" == *"$1"* ]] && return 0
    sleep 0.2
  done
  sandbox_fail "the terminal never showed $(_quoted "$1"); it shows:" "$screen"
}

# sandbox_tmux_keys KEY...: types into the terminal; KEY is as tmux send-keys takes it.
sandbox_tmux_keys() {
  _sandbox_tmux send-keys "$@"
}

# sandbox_tmux_wait_end: waits at most 20 seconds for the command to end and sets "status".
sandbox_tmux_wait_end() {
  local tries
  for ((tries = 0; tries < 100; tries++)); do
    if [[ -s "$SANDBOX/status" ]]; then
      status=$(cat "$SANDBOX/status")
      return 0
    fi
    sleep 0.2
  done
  sandbox_tmux_screen
  sandbox_fail "the command in the terminal did not end: $SB_LAST_COMMAND; it shows:" "$screen"
}

# sandbox_tmux_stop: ends the terminal server and whatever still runs in it. Call it from
# teardown before sandbox_teardown.
sandbox_tmux_stop() {
  [[ -n "${SANDBOX:-}" && -S "$SANDBOX/tmux.sock" ]] || return 0
  _sandbox_tmux kill-server 2>/dev/null || true
}

# sandbox_write PATH < CONTENT
# Writes the bytes of standard input to PATH inside the sandbox, as root, making the
# directories above it.
sandbox_write() {
  local path=$1
  cat >"$SANDBOX/write.in"
  _sandbox_check "mkdir -p \"\$(dirname '$path')\" && cat >'$path'" "$SANDBOX/write.in" || return 1
  [[ "$(cat "$SANDBOX/status")" == 0 ]] ||
    sandbox_fail "cannot write $path in the sandbox: $(cat "$SANDBOX/check.err")"
}

# Installs the language "T", made from the program's own C.lang: each key's sentence is the
# key itself followed by one " [ARG]" per marker of the original, so that
# "ErrorFileDoNotExist=ErrorFileDoNotExist [ARG]". Output then names keys and arguments
# and never depends on wording.
sandbox_install_test_lang() {
  local source=$ZET_SOURCE_DIR/lang/C.lang
  [[ -r "$source" ]] || sandbox_fail "no language file to derive the test language from: $source" ||
    return 1
  make_test_lang <"$source" | sandbox_write /usr/share/zet/lang/T.lang
}

# The filter behind sandbox_install_test_lang. A sentence continues on the next line while
# it ends in a backslash, as the program reads it.
make_test_lang() {
  awk '
    {
      sub(/\r$/, "")
      if (!continued) {
        i = index($0, "=")
        if (i == 0) next
        key = substr($0, 1, i - 1)
        value = substr($0, i + 1)
      } else {
        value = value "\n" $0
      }
      if (value ~ /\\$/) { continued = 1; next }
      continued = 0
      markers = gsub(/\[ARG\]/, "", value)
      line = key "=" key
      for (n = 0; n < markers; n++) line = line " [ARG]"
      print line
    }'
}

# --- Expectations -----------------------------------------------------------------------
# Each one fails the test with the expected and the actual value, and the command, on
# standard error. Bytes are shown quoted, so that escapes and line ends are visible.

# _read_bytes VAR FILE: the content of the file, trailing line ends included, into VAR.
_read_bytes() {
  local _content
  _content=$(cat "$2"; printf x)
  printf -v "$1" '%s' "${_content%x}"
}

_quoted_file() {
  local content
  _read_bytes content "$1"
  printf '%q' "$content"
}

_quoted() {
  printf '%q' "$1"
}

_context() {
  echo "  command:  ${SB_LAST_COMMAND:-}"
  echo "  status:   ${status:-}"
  echo "  stdout:   $(_quoted_file "$SB_STDOUT")"
  echo "  stderr:   $(_quoted_file "$SB_STDERR")"
}

# expect_equal WHAT EXPECTED ACTUAL
expect_equal() {
  [[ "$2" == "$3" ]] && return 0
  sandbox_fail "$1 differs" "  expected: $(_quoted "$2")" "  actual:   $(_quoted "$3")"
}

# expect_status N
expect_status() {
  [[ "$status" == "$1" ]] && return 0
  sandbox_fail "expected exit status $1, got $status" "$(_context)"
}

# expect_stdout BYTES / expect_stderr BYTES: the whole stream is exactly BYTES.
# Write the bytes with $'...' to spell line ends and escapes: $'ERROR: X\n'.
expect_stdout() { _expect_stream stdout "$SB_STDOUT" "$1"; }
expect_stderr() { _expect_stream stderr "$SB_STDERR" "$1"; }

_expect_stream() {
  local name=$1 file=$2 expected=$3
  printf '%s' "$expected" >"$SANDBOX/expected"
  cmp -s "$SANDBOX/expected" "$file" && return 0
  sandbox_fail "$name differs" "  expected: $(_quoted "$expected")" "  actual:   $(_quoted_file "$file")" \
    "$(_context)"
}

# expect_stdout_line LINE / expect_stderr_line LINE: some line of the stream is exactly LINE.
expect_stdout_line() { _expect_line stdout "$SB_STDOUT" "$1"; }
expect_stderr_line() { _expect_line stderr "$SB_STDERR" "$1"; }

_expect_line() {
  local name=$1 file=$2 expected=$3 line
  while IFS= read -r line || [[ -n "$line" ]]; do
    [[ "$line" == "$expected" ]] && return 0
  done <"$file"
  sandbox_fail "$name has no line $(_quoted "$expected")" "$(_context)"
}

# expect_plain stdout|stderr: the stream holds no escape byte at all.
expect_plain() {
  local file=$SB_STDOUT
  [[ "$1" == stderr ]] && file=$SB_STDERR
  grep -q $'\e' "$file" || return 0
  sandbox_fail "$1 holds an escape byte" "$(_context)"
}

# expect_file_content PATH BYTES: the file inside the sandbox holds exactly BYTES.
expect_file_content() {
  local path=$1 expected=$2
  _sandbox_check "cat '$path'" || return 1
  if [[ "$(cat "$SANDBOX/status")" != 0 ]]; then
    sandbox_fail "expected $path to hold $(_quoted "$expected"), but it cannot be read:" \
      "  $(cat "$SANDBOX/check.err")"
    return 1
  fi
  printf '%s' "$expected" >"$SANDBOX/expected"
  cmp -s "$SANDBOX/expected" "$SANDBOX/check.out" && return 0
  sandbox_fail "$path differs" "  expected: $(_quoted "$expected")" \
    "  actual:   $(_quoted_file "$SANDBOX/check.out")" "  after:    ${SB_LAST_COMMAND:-the set-up}"
}

# expect_exists PATH... / expect_missing PATH...: inside the sandbox. A PATH may be a shell
# pattern, such as '/tmp/zet-*'; a dangling link counts as existing.
expect_exists() {
  local script='for p in '"$*"'; do [ -e "$p" ] || [ -L "$p" ] || echo "$p"; done'
  _sandbox_check "$script" || return 1
  [[ -s "$SANDBOX/check.out" ]] || return 0
  sandbox_fail "expected to exist in the sandbox, but missing:" "$(sed 's/^/  /' "$SANDBOX/check.out")" \
    "  after:    ${SB_LAST_COMMAND:-the set-up}"
}

expect_missing() {
  local script='for p in '"$*"'; do if [ -e "$p" ] || [ -L "$p" ]; then echo "$p"; fi; done'
  _sandbox_check "$script" || return 1
  [[ -s "$SANDBOX/check.out" ]] || return 0
  sandbox_fail "expected to be missing in the sandbox, but present:" \
    "$(sed 's/^/  /' "$SANDBOX/check.out")" "  after:    ${SB_LAST_COMMAND:-the set-up}"
}
