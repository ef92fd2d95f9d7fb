#!/usr/bin/env bats
# The infobox and the menu of an install, as root in a sandbox. A stand-in for the dialog
# tool logs its arguments, one a line, to /srv/dialog.log, notes where its standard error
# goes, and answers with the content of /srv/answer on standard error, as the tool does.
# The last test drives the real tool in a terminal.

load lib/sandbox

setup() {
  sandbox_setup
  sandbox_install_test_lang
  mkpkg a install/ $'install/slack-desc=a: the "a" package\na:\na: third line\n' zt/ zt/a.txt=a
  mkpkg b install/ 'install/slack-desc=b: the b package\n' zt/ zt/b.txt=b
  mkpkg c install/ 'install/slack-desc=c: the c package\n' zt/ zt/c.txt=c
}
teardown() {
  sandbox_tmux_stop
  sandbox_teardown
}

# mkpkg NAME MEMBER...: the package file /tmp/NAME-1.0-noarch-1.tgz in the sandbox.
mkpkg() {
  local name=$1
  shift
  "$ZET_SOURCE_DIR/tests/fixtures/mkpkg" "$SANDBOX/tmp/$name-1.0-noarch-1.tgz" "$@"
}

stand_in_tool() {
  sandbox_write /srv/dialog <<'SCRIPT'
#!/bin/sh
printf '%s\n' "$@" >>/srv/dialog.log
readlink /proc/$$/fd/2 >>/srv/stderr.log
cat /srv/answer >&2
SCRIPT
  sandbox_run 'rm /lib/zetutils/dialog && mv /srv/dialog /lib/zetutils/dialog &&
    chmod 755 /lib/zetutils/dialog && : >/srv/answer && : >/srv/dialog.log'
  expect_status 0
}

# installs WORDS...: installzet in the test language on the packages named by short name.
installs() {
  local options=$1 name packages=
  shift
  for name in "$@"; do packages+=" /tmp/$name-1.0-noarch-1.tgz"; done
  sandbox_run "LANG=T installzet --no-colors --nodeps $options$packages"
}

answer() { printf '%s\n' "$1" | sandbox_write /srv/answer; }

expect_installed() {
  local name
  for name in "$@"; do expect_exists "/var/log/packages/$name-1.0-noarch-1" "/zt/$name.txt" || return 1; done
}
expect_not_installed() {
  local name
  for name in "$@"; do expect_missing "/var/log/packages/$name-1.0-noarch-1" "/zt/$name.txt" || return 1; done
}

# The size line of the dialog text, with the sizes that the record of the package keeps.
size_line() {
  _sandbox_check "sed -n 's/^.*COMPRESSED PACKAGE SIZE: *\([0-9]*\) K$/\1/p' /var/log/packages/$1-1.0-noarch-1"
  echo "dialog_compressed_and_uncompressed $(cat "$SANDBOX/check.out" | paste -sd ' ')"
}

@test "an infobox shows the title and the escaped, joined description with the sizes, and installs" {
  stand_in_tool
  installs --infobox a
  expect_status 0
  expect_stdout ''
  expect_installed a
  expect_file_content /srv/dialog.log "--title
dialog_installing_package a-1.0-noarch-1
--infobox
 the \"a\" package\\n\\n third line\\n$(size_line a)
0
0
"
}

@test "a menu offers yes, no and quit, and its answer comes back through the temporary area" {
  stand_in_tool
  answer yes
  installs --menu a
  expect_status 0
  expect_stdout ''
  expect_installed a
  expect_file_content /srv/dialog.log "--title
dialog_installing_package a-1.0-noarch-1
--menu
 the \"a\" package\\n\\n third line\\n$(size_line a)
0
0
3
yes
dialog_install_package a
no
dialog_do_not_install a
quit
dialog_abort
"
  _sandbox_check 'cat /srv/stderr.log'
  [[ "$(cat "$SANDBOX/check.out")" =~ ^/tmp/zet-[0-9]+/menudialog-result$ ]] ||
    sandbox_fail "the answer went elsewhere: $(cat "$SANDBOX/check.out")"
  expect_missing '/tmp/zet-*'
}

@test "the menu's no skips a package silently, and any other answer installs" {
  stand_in_tool
  answer no
  installs --menu a
  expect_status 0
  expect_stdout ''
  expect_not_installed a
  local reply
  for reply in '' 'something else' 'no '; do
    answer "$reply"
    installs --menu a
    expect_status 0
    expect_installed a
    sandbox_run 'LANG=T removezet --no-colors a'
  done
}

@test "the menu's quit ends the run at once with status 0, leaving earlier packages installed" {
  stand_in_tool
  answer yes
  installs --menu a
  answer quit
  installs --menu b c
  expect_status 0
  expect_stdout ''
  expect_stderr ''
  expect_installed a
  expect_not_installed b c
  expect_missing '/tmp/zet-*'
}

@test "menu beats infobox; a package tagged ADD is installed without a question, with console text" {
  stand_in_tool
  printf 'a: ADD\nb: OPT\n' | sandbox_write /srv/tags
  installs '--menu --infobox --tagfile /srv/tags' a b
  expect_status 0
  expect_installed a b
  expect_stdout_line 'MessageInstallingPackage a-1.0-noarch-1'
  [[ "$stdout" != *'MessageInstallingPackage b-'* ]] || sandbox_fail "b was announced" "$(_context)"
  _sandbox_check 'grep -e --infobox -e ^dialog_installing_package /srv/dialog.log'
  expect_equal "dialogs shown" 'dialog_installing_package b-1.0-noarch-1' "$(cat "$SANDBOX/check.out")"
}

@test "warn prints no install message but still shows the dialogs" {
  stand_in_tool
  installs '--warn --menu' a
  expect_status 0
  [[ "$stdout" != *MessageInstallingPackage* ]] || sandbox_fail "announced under warn" "$(_context)"
  installs '--warn --infobox' a
  expect_status 0
  [[ "$stdout" != *MessageInstallingPackage* ]] || sandbox_fail "announced under warn" "$(_context)"
  _sandbox_check 'grep -e --menu -e --infobox /srv/dialog.log'
  expect_equal "dialogs shown" $'--menu\n--infobox' "$(cat "$SANDBOX/check.out")"
}

@test "the real tool in a terminal: no skips the first package, yes installs the second" {
  sandbox_tmux_start 'LANG=T installzet --no-colors --nodeps --menu /tmp/a-1.0-noarch-1.tgz /tmp/b-1.0-noarch-1.tgz'
  sandbox_tmux_wait_for 'the "a" package'
  sandbox_tmux_wait_for 'dialog_do_not_install a'
  sandbox_tmux_keys Down Enter
  sandbox_tmux_wait_for 'the b package'
  sandbox_tmux_keys Enter
  sandbox_tmux_wait_end
  expect_status 0
  expect_not_installed a
  expect_installed b
  expect_missing '/tmp/zet-*'
}
