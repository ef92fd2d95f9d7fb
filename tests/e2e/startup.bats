#!/usr/bin/env bats
# Start-up and the command line: help screens, refused lines, the tool check, the
# configuration file, the language, the root check, the scratch directory and the
# database directories. The output is in the test language "T", which prints each key and
# its arguments.

load lib/sandbox

setup() {
  sandbox_setup
  sandbox_install_test_lang
}
teardown() { sandbox_teardown; }

red=$'\e[1;31m'
reset=$'\e[1;0m'
bad_line_plain=$'ERROR: ErrorBadArgumentLine\n'
bad_line_coloured="${red}ERROR: ErrorBadArgumentLine"$'\n'"$reset"

# The ten database directories, relative to the root.
database_dirs=(/var /var/log /var/log/packages /var/log/scripts /var/log/postinst
  /var/log/build /var/log/deps /var/log/setup /var/log/setup/tmp
  /var/log/setup/tmp/preserved_packages)

# expect_help CMDLINE KEY: the help screen of KEY, without colour, and nothing else.
expect_help() {
  sandbox_run "LANG=T $1 --no-colors"
  expect_status 0
  expect_stdout "$2 1.0rc1"$'\n'
  expect_stderr ''
}

# expect_refused CMDLINE STDERR: the command line is refused with status 98, the one error
# and nothing on standard output.
expect_refused() {
  sandbox_run "LANG=T $1"
  expect_status 98
  expect_stderr "$2"
  expect_stdout ''
}

@test "each name shows its own help screen with the version, whatever else the line holds" {
  sandbox_run 'LANG=T zet --help'
  expect_status 0
  expect_stdout "${reset}HelpZet 1.0rc1"$'\n'"$reset"
  expect_stderr ''

  expect_help 'zet -h' HelpZet
  expect_help 'zet --help --root /newroot' HelpZet
  expect_help 'installzet --help' HelpInstallzet
  expect_help 'installzet --help --remove' HelpInstallzet
  expect_help 'removezet -h' HelpRemovezet
  expect_help '/usr/local/sbin/removezet --help --warn a b' HelpRemovezet
  expect_help 'upgradezet --help --force --debug' HelpUpgradezet
  # Only the exact names are personas.
  sandbox_run 'ln -s zet /usr/local/sbin/installzet2'
  expect_help 'installzet2 --help' HelpZet
  expect_missing /newroot
}

@test "a refused command line prints ErrorBadArgumentLine in colour and ends with status 98" {
  expect_refused 'zet' "$bad_line_coloured"
  expect_refused 'zet -i' "$bad_line_coloured"
  expect_refused 'removezet' "$bad_line_coloured"
  expect_refused 'zet -i --help' "$bad_line_coloured"
  expect_refused 'zet -i -r a.tgz' "$bad_line_coloured"
  expect_refused 'zet -i --install a.tgz' "$bad_line_coloured"
  expect_refused 'zet -u --force a.tgz' "$bad_line_coloured"
  expect_refused 'zet -u --root /newroot a.tgz' "$bad_line_coloured"
  expect_refused 'zet -i --debug --root /newroot a.tgz' "$bad_line_coloured"
  expect_refused 'removezet --install x' "$bad_line_coloured"
  expect_refused 'installzet --preserve a.tgz' "$bad_line_coloured"
  expect_missing /newroot
}

@test "a line that cannot be parsed is refused before the colours are on" {
  expect_refused 'zet --bogus' "$bad_line_plain"
  expect_refused 'zet -i --root' "$bad_line_plain"
  expect_refused 'zet -i --root --force a.tgz' "$bad_line_plain"
  expect_refused 'zet -i a.tgz --force b.tgz' "$bad_line_plain"
  expect_refused 'zet --root=/newroot -i a.tgz' "$bad_line_plain"
  expect_refused 'zet -i -- a.tgz' "$bad_line_plain"
  expect_refused 'installzet -iu a.tgz' "$bad_line_plain"
  expect_missing /newroot
}

@test "--no-colors leaves every escape byte out" {
  expect_refused 'zet --no-colors' "$bad_line_plain"
  expect_refused 'zet -u --force a.tgz --no-colors' "$bad_line_plain"
  sandbox_run 'LANG=T zet --help --no-colors'
  expect_plain stdout
  sandbox_run --user 'LANG=T zet -i a.tgz --no-colors'
  expect_status 96
  expect_stderr $'ERROR: ErrorNotRoot\n'
}

@test "a missing tool is reported plainly on every run, and the run goes on" {
  sandbox_run 'rm /lib/zetutils/tar'
  sandbox_run 'LANG=T zet --help'
  expect_status 0
  expect_stderr $'ERROR: ErrorRequiredAppDoNotExists /lib/zetutils/tar\n'
  expect_stdout "${reset}HelpZet 1.0rc1"$'\n'"$reset"

  expect_refused 'zet' $'ERROR: ErrorRequiredAppDoNotExists /lib/zetutils/tar\n'"$bad_line_coloured"

  # All three, in the order gzip, tar, dialog; a link to nothing is as good as missing.
  sandbox_run 'rm /lib/zetutils/gzip && ln -sf /nonexistent /lib/zetutils/dialog'
  sandbox_run --user 'LANG=T zet -h --no-colors'
  expect_status 0
  expect_stderr 'ERROR: ErrorRequiredAppDoNotExists /lib/zetutils/gzip
ERROR: ErrorRequiredAppDoNotExists /lib/zetutils/tar
ERROR: ErrorRequiredAppDoNotExists /lib/zetutils/dialog
'
  expect_stdout $'HelpZet 1.0rc1\n'
}

@test "the first run writes /etc/zet.conf before the options are read; a present one is kept" {
  expect_missing /etc/zet.conf
  sandbox_run 'LANG=T zet --help'
  expect_status 0
  expect_file_content /etc/zet.conf $'[zet]\ndeps=no\n'

  sandbox_run 'rm /etc/zet.conf'
  expect_refused 'zet --bogus' "$bad_line_plain"
  expect_file_content /etc/zet.conf $'[zet]\ndeps=no\n'

  printf '# mine\n[zet]\ndeps=yes\n' | sandbox_write /etc/zet.conf
  sandbox_run 'LANG=T zet --help'
  expect_status 0
  expect_file_content /etc/zet.conf $'# mine\n[zet]\ndeps=yes\n'
}

@test "a user who may not write /etc/zet.conf gets no file and no message" {
  expect_help 'zet --help' HelpZet
  sandbox_run 'rm /etc/zet.conf'
  sandbox_run --user 'LANG=T zet --help --no-colors'
  expect_status 0
  expect_stdout $'HelpZet 1.0rc1\n'
  expect_stderr ''
  expect_missing /etc/zet.conf
}

@test "LANG names the language; an unknown, empty or absent LANG falls back to C" {
  local c_help
  sandbox_run 'LANG=C zet --help --no-colors'
  expect_status 0
  c_help=$stdout
  [[ "$c_help" == *1.0rc1* && "$c_help" != *"not found in lang file"* ]] ||
    sandbox_fail "the C help screen lacks the version or a sentence: $(_quoted "$c_help")"

  expect_help 'zet --help' HelpZet
  for lang in '' C.UTF-8 xx_YY.UTF-8; do
    sandbox_run "LANG='$lang' zet --help --no-colors"
    expect_status 0
    expect_stdout "$c_help"
    expect_stderr ''
  done
  sandbox_run 'zet --help --no-colors'
  expect_stdout "$c_help"
}

@test "a language file that lacks a sentence is used as it is, and says what is missing" {
  printf 'HelpZet=HelpZet [ARG]\n' | sandbox_write /usr/share/zet/lang/Partial.lang
  sandbox_run 'LANG=Partial zet --no-colors'
  expect_status 98
  expect_stdout $'Lang::get(): sentence \'ErrorBadArgumentLine\' not found in lang file\n'
  expect_stderr $'ERROR: \n'
}

@test "--lang speaks from the checks that follow the flags, on top of LANG" {
  local c_bad_line
  sandbox_run 'LANG=C zet -i --no-colors'
  expect_status 98
  c_bad_line=$stderr
  [[ "$c_bad_line" != "$bad_line_plain" ]] || sandbox_fail "C speaks like T: $(_quoted "$c_bad_line")"

  # Refused for the permitted options, after the flags: the new language speaks.
  sandbox_run 'LANG=C zet -u --lang T --force a.tgz --no-colors'
  expect_status 98
  expect_stderr "$bad_line_plain"
  # Refused for want of a word, before the flags: still the first language.
  sandbox_run 'LANG=C zet -i --lang T --no-colors'
  expect_status 98
  expect_stderr "$c_bad_line"
  # A language that does not exist loads C on top of T.
  sandbox_run 'LANG=T zet -u --lang nowhere --force a.tgz --no-colors'
  expect_status 98
  expect_stderr "$c_bad_line"
  # Help comes before the flags.
  sandbox_run 'LANG=C zet --help --lang T --no-colors'
  expect_status 0
  [[ "$stdout" != $'HelpZet 1.0rc1\n' ]] || sandbox_fail "help spoke the language of --lang"
}

@test "a user who is not root is refused after the command line, and nothing is made" {
  sandbox_run --user 'LANG=T zet -i --root /tmp/newroot a.tgz'
  expect_status 96
  expect_stderr "${red}ERROR: ErrorNotRoot"$'\n'"$reset"
  expect_stdout ''
  expect_missing /tmp/newroot

  sandbox_run --user 'LANG=T removezet x --no-colors'
  expect_status 96
  expect_stderr $'ERROR: ErrorNotRoot\n'

  sandbox_run --user 'LANG=T zet -i'
  expect_status 98
  expect_stderr "$bad_line_coloured"

  sandbox_run --user 'LANG=T upgradezet --help --no-colors'
  expect_status 0
  expect_stdout $'HelpUpgradezet 1.0rc1\n'
}

@test "no scratch directory is left in /tmp on any way out" {
  printf 'foo: SKP\n' | sandbox_write /srv/e2e/tagfile
  local cmdline
  for cmdline in 'zet --help' 'zet' 'zet --bogus' 'zet -u --force a.tgz' \
    'zet -i --tagfile /srv/e2e/tagfile foo-1.0-i386-1.tgz'; do
    sandbox_run "LANG=T $cmdline"
    expect_missing '/tmp/zet-*'
    sandbox_run --user "LANG=T $cmdline"
    expect_missing '/tmp/zet-*'
  done
  sandbox_run --user 'LANG=T zet -i a.tgz'
  expect_status 96
  expect_missing '/tmp/zet-*'
}

@test "a valid line as root makes the database directories under /" {
  sandbox_run 'rm -rf /var/log/packages /var/log/scripts /var/log/postinst /var/log/build \
    /var/log/deps /var/log/setup'
  expect_missing "${database_dirs[@]:2}"

  # The tag file in the working directory drops the one word: the group is empty.
  printf 'foo: SKP\n' | sandbox_write /srv/e2e/tagfile
  sandbox_run 'cd /srv/e2e && LANG=T zet -i foo-1.0-i386-1.tgz'
  expect_status 0
  expect_stderr ''
  expect_exists "${database_dirs[@]}"
}

@test "--root makes the root with its parents, and the database under it alone" {
  sandbox_run 'rm -rf /var/log/setup'
  printf 'foo: SKP\n' | sandbox_write /srv/e2e/tags
  sandbox_run 'LANG=T zet -i --root /new/deep/root --tagfile /srv/e2e/tags foo-1.0-i386-1.tgz'
  expect_status 0
  expect_stderr ''
  expect_exists "${database_dirs[@]/#//new/deep/root}"
  expect_missing /var/log/setup
}
