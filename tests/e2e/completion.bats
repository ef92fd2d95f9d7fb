#!/usr/bin/env bats
# The bash completion: the script is sourced into bash and its function called with the
# words of a command line, as bash would. Most tests need nothing but the source tree; the
# installed package names and languages are looked up inside a sandbox with this build
# installed.

load lib/sandbox

setup() {
  : "${ZET_SOURCE_DIR:?ZET_SOURCE_DIR must name the source directory}"
  export LANG=C
  cd "$BATS_TEST_TMPDIR"
}

teardown() {
  [[ -z "${SANDBOX:-}" ]] || sandbox_teardown
}

# complete WORD...: the completions of the last word, one a line, sorted.
complete() {
  bash -c 'source "$1"; shift
    COMP_WORDS=("$@"); COMP_CWORD=$(($# - 1)); COMP_LINE="$*"; COMP_POINT=${#COMP_LINE}
    _zet; printf "%s\n" "${COMPREPLY[@]}"' complete "$ZET_SOURCE_DIR/completion/zet" "$@" |
    LC_ALL=C sort
}

# expect_completion "WORD..." EXPECTED...: the completions of the line are exactly these.
expect_completion() {
  local line=$1
  shift
  local -a words
  read -ra words <<<"$line"
  [[ "$line" == *" " ]] && words+=("")
  local expected=
  (($#)) && expected=$(printf '%s\n' "$@" | LC_ALL=C sort)
  expect_equal "completions of '$line'" "$expected" "$(complete "${words[@]}")"
}

@test "the script registers one function for the four names" {
  run bash -c 'source "$1"; complete -p zet installzet removezet upgradezet' x \
    "$ZET_SOURCE_DIR/completion/zet"
  expect_equal status 0 "$status"
  expect_equal registrations "complete -F _zet zet
complete -F _zet installzet
complete -F _zet removezet
complete -F _zet upgradezet" "$output"
}

@test "zet offers its operations first" {
  expect_completion "zet " -i --install -r --remove -u --upgrade -h --help
  expect_completion "zet --" --install --remove --upgrade --help
  expect_completion "zet --re" --remove
  expect_completion "zet -up" -upgrade
  expect_completion "zet --i" --install
}

@test "after an operation only its permitted options are offered" {
  local common=(--deps --nodeps --lang --no-colors --show-deps)
  expect_completion "zet -i --" --root --tagfile --priority --force --infobox --menu --ask \
    --warn "${common[@]}"
  expect_completion "zet --remove -" --warn --preserve --copy --with-deps "${common[@]}"
  expect_completion "zet -upgrade --" --install-new --reinstall "${common[@]}"
  expect_completion "installzet --" --root --tagfile --priority --force --infobox --menu \
    --ask --warn "${common[@]}"
  expect_completion "removezet --" --warn --preserve --copy --with-deps "${common[@]}"
  expect_completion "upgradezet --" --install-new --reinstall "${common[@]}"
  expect_completion "upgradezet --f"
  expect_completion "removezet --root"
}

@test "an option is offered in the dash style typed, and not twice" {
  expect_completion "zet -i -ro" -root
  expect_completion "zet -i --ro" --root
  expect_completion "zet -r --warn --w" --with-deps
  expect_completion "zet -r -warn --w" --with-deps
  expect_completion "installzet --lang C --l"
}

@test "after help nothing more is offered" {
  expect_completion "zet --help "
  expect_completion "zet -h --"
}

@test "the values of --priority are the four tags" {
  expect_completion "zet -i --priority " ADD REC OPT SKP
  expect_completion "installzet -priority R" REC
}

@test "--root offers directories and --tagfile files" {
  mkdir -p mnt/a mnt/b
  : >mnt/tags
  expect_completion "installzet --root mnt/" mnt/a mnt/b
  expect_completion "installzet --tagfile mnt/t" mnt/tags
}

@test "install and upgrade offer package files and directories, and only those" {
  mkdir pkgs
  : >pkgs/foo-1.0-noarch-1.tgz
  : >pkgs/bar-2.0-noarch-1.tgz
  : >pkgs/notes.txt
  mkdir pkgs/more
  expect_completion "installzet pkgs/" pkgs/bar-2.0-noarch-1.tgz pkgs/foo-1.0-noarch-1.tgz \
    pkgs/more
  expect_completion "zet -u --reinstall pkgs/f" pkgs/foo-1.0-noarch-1.tgz
  expect_completion "zet -i --root mnt pkgs/b" pkgs/bar-2.0-noarch-1.tgz
}

# The tests below look at the installed system, inside a sandbox with this build installed,
# through the installed script.

# complete_in_sandbox WORD...: as complete, with the installed script, inside the sandbox.
complete_in_sandbox() {
  local words= word
  for word in "$@"; do words+=" '$word'"; done
  sandbox_run "bash -c 'source /usr/local/share/bash-completion/completions/zet
    COMP_WORDS=(\"\$@\"); COMP_CWORD=\$((\$# - 1)); _zet; printf \"%s\n\" \"\${COMPREPLY[@]}\"' \
    complete $words | LC_ALL=C sort"
  expect_status 0
}

@test "removal offers the short names of the installed packages, then their full names" {
  sandbox_setup || return 1
  local name
  for name in foo-1.0-noarch-1 foo-docs-1.0-noarch-1 libbar-2.3-x86_64-2; do
    echo "PACKAGE NAME: $name" | sandbox_write "/var/log/packages/$name"
  done

  complete_in_sandbox removezet ""
  expect_stdout $'foo\nfoo-docs\nlibbar\n'
  complete_in_sandbox zet -r --warn f
  expect_stdout $'foo\nfoo-docs\n'
  complete_in_sandbox removezet foo-1
  expect_stdout $'foo-1.0-noarch-1\n'
  complete_in_sandbox removezet libbar-2
  expect_stdout $'libbar-2.3-x86_64-2\n'
  complete_in_sandbox removezet --preserve x
  expect_stdout $'\n'
}

@test "--lang offers the installed languages, and the other names have the completion too" {
  sandbox_setup || return 1
  complete_in_sandbox zet -r --lang ""
  expect_stdout $'C\nde\npl\n'

  local name
  for name in installzet removezet upgradezet; do
    sandbox_run "bash -c 'source /usr/local/share/bash-completion/completions/$name
      complete -p $name'"
    expect_status 0
    expect_stdout "complete -F _zet $name"$'\n'
  done
}
