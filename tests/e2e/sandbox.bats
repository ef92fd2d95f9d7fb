#!/usr/bin/env bats
# The sandbox that the other suites stand on: what a command inside sees, and that the host
# sees nothing of it.

load lib/sandbox

setup() { sandbox_setup; }
teardown() { sandbox_teardown; }

@test "a command runs as root or as an unprivileged user, with PATH alone, its outputs apart" {
  export LANG=xx_XX.UTF-8 ZET_SECRET=host
  sandbox_run 'id -u; echo "$PATH"; echo "${LANG-unset} ${ZET_SECRET-unset}"; echo oops >&2; exit 3'
  expect_status 3
  expect_stdout $'0\n'"$SANDBOX_PATH"$'\nunset unset\n'
  expect_stderr $'oops\n'

  sandbox_run --user 'id -u; id -g; id -G; pwd'
  expect_status 0
  expect_stdout $'65534\n65534\n65534\n/\n'
  expect_stderr ''
}

@test "a sandbox starts as a fresh machine with the build installed, and keeps its state" {
  expect_exists /usr/local/sbin/zet /usr/local/sbin/installzet /usr/local/sbin/removezet \
    /usr/local/sbin/upgradezet /usr/share/zet/lang/C.lang \
    /lib/zetutils/tar /lib/zetutils/gzip /lib/zetutils/dialog
  expect_missing /etc/zet.conf '/tmp/*'
  sandbox_run 'command -v zet; command -v installzet'
  expect_stdout $'/usr/local/sbin/zet\n/usr/local/sbin/installzet\n'

  printf 'one\ntwo' | sandbox_write /srv/e2e/note
  expect_file_content /srv/e2e/note $'one\ntwo'
  sandbox_run 'echo three >>/srv/e2e/note && rm /lib/zetutils/dialog'
  expect_status 0
  expect_file_content /srv/e2e/note $'one\ntwothree\n'
  expect_missing /lib/zetutils/dialog
}

@test "the test language names each key and one [ARG] per marker" {
  run make_test_lang <<'EOF'
ErrorTwo=from [ARG] to [ARG].
HelpZet=Usage, version [ARG]:\
  more lines [ARG]\
  and the end
MessagePlain=nothing to fill
no equals sign here
EOF
  expect_equal "test language" $'ErrorTwo=ErrorTwo [ARG] [ARG]\nHelpZet=HelpZet [ARG] [ARG]\nMessagePlain=MessagePlain' "$output"

  sandbox_install_test_lang
  expect_file_content /usr/share/zet/lang/T.lang "$(make_test_lang <"$ZET_SOURCE_DIR/lang/C.lang")"$'\n'
  sandbox_run 'grep -c . /usr/share/zet/lang/T.lang; grep -E "^(ErrorFileDoNotExist|ErrorNotRoot|HelpZet)=" /usr/share/zet/lang/T.lang'
  expect_stdout_line 'ErrorFileDoNotExist=ErrorFileDoNotExist [ARG]'
  expect_stdout_line 'ErrorNotRoot=ErrorNotRoot'
  expect_stdout_line 'HelpZet=HelpZet [ARG]'
}

# What the host has at the paths that the sandboxed commands change: kind, mode, owner,
# link target and content.
host_state() {
  local path
  for path in /etc/zet.conf /lib/zetutils /lib/zetutils/tar /lib/zetutils/gzip \
    /lib/zetutils/dialog /lib/zetutils/new /usr/local/sbin/zet /srv/e2e; do
    if [[ -e "$path" || -L "$path" ]]; then
      stat -c '%N %F %a %U' "$path"
      [[ -f "$path" && ! -L "$path" ]] && sha256sum "$path"
    else
      echo "$path absent"
    fi
  done
  return 0
}

@test "what a sandbox changes never reaches the host" {
  local before
  before=$(host_state)

  sandbox_run 'LANG=C zet --help'
  expect_status 0
  sandbox_run 'echo changed >>/etc/zet.conf && rm /lib/zetutils/tar &&
    ln -sf /bin/false /lib/zetutils/gzip && touch /lib/zetutils/new /usr/local/sbin/zet &&
    mkdir -p /srv/e2e'
  expect_status 0
  expect_file_content /etc/zet.conf $'[zet]\ndeps=no\nchanged\n'
  expect_missing /lib/zetutils/tar
  expect_exists /lib/zetutils/new /srv/e2e

  expect_equal "host state" "$before" "$(host_state)"
}
