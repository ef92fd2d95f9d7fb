#!/usr/bin/env bats
# The installation of the build, into a DESTDIR: what lands where, and that nothing lands
# anywhere else. Needs no sandbox and no root.

load lib/sandbox

setup() {
  : "${ZET_BUILD_DIR:?ZET_BUILD_DIR must name the build directory}"
  : "${ZET_SOURCE_DIR:?ZET_SOURCE_DIR must name the source directory}"
  dest=$BATS_TEST_TMPDIR/dest
}

# What the host has where an installation without DESTDIR would write.
host_state() {
  local path
  for path in /usr/local/sbin/zet /usr/local/sbin/installzet /usr/local/sbin/removezet \
    /usr/local/sbin/upgradezet /usr/local/share/man/man8/zet.8 \
    /usr/local/share/bash-completion/completions/zet /usr/share/zet /usr/share/zet/lang /usr/share/zet/lang/* \
    /lib/zetutils /lib/zetutils/tar /lib/zetutils/gzip /lib/zetutils/dialog; do
    if [[ -e "$path" || -L "$path" ]]; then
      stat -c '%N %F %a %U %s %Y' "$path"
    else
      echo "$path absent"
    fi
  done
}

# expect_tool_link NAME: lib/zetutils/NAME links to the system's program of that name.
expect_tool_link() {
  local link=$dest/lib/zetutils/$1 target
  [[ -L "$link" ]] || sandbox_fail "not a link: $link" || return 1
  target=$(readlink "$link")
  [[ "$target" == /* && "${target##*/}" == "$1" ]] ||
    sandbox_fail "$link should point at the system's $1, points at $target" || return 1
  if command -v "$1" >/dev/null; then
    [[ -x "$target" ]] || sandbox_fail "$link points at $target, which is no program"
  fi
}

@test "DESTDIR receives the program, its three names, the manual pages, the completion, the languages and the tool links, and nothing else" {
  local before
  before=$(host_state)

  DESTDIR=$dest cmake --install "$ZET_BUILD_DIR" >"$BATS_TEST_TMPDIR/install.log" 2>&1 ||
    sandbox_fail "installation failed:" "$(cat "$BATS_TEST_TMPDIR/install.log")"

  [[ -f "$dest/usr/local/sbin/zet" && ! -L "$dest/usr/local/sbin/zet" &&
     -x "$dest/usr/local/sbin/zet" ]] || sandbox_fail "no program at usr/local/sbin/zet"
  local name
  for name in installzet removezet upgradezet; do
    expect_equal "link usr/local/sbin/$name" zet "$(readlink "$dest/usr/local/sbin/$name")"
  done

  local file
  for file in "$ZET_SOURCE_DIR"/lang/*.lang; do
    cmp "$file" "$dest/usr/share/zet/lang/${file##*/}" ||
      sandbox_fail "language file ${file##*/} not installed as it stands"
  done
  [[ -f "$dest/usr/share/zet/lang/C.lang" ]] || sandbox_fail "no C.lang installed"

  cmp "$ZET_SOURCE_DIR/man/zet.8" "$dest/usr/local/share/man/man8/zet.8" ||
    sandbox_fail "manual page zet.8 not installed as it stands"
  cmp "$ZET_SOURCE_DIR/completion/zet" "$dest/usr/local/share/bash-completion/completions/zet" ||
    sandbox_fail "completion script not installed as it stands"
  for name in installzet removezet upgradezet; do
    expect_equal "manual page $name.8" ".so man8/zet.8" \
      "$(cat "$dest/usr/local/share/man/man8/$name.8")"
    expect_equal "completion link $name" zet \
      "$(readlink "$dest/usr/local/share/bash-completion/completions/$name")"
  done

  expect_tool_link tar
  expect_tool_link gzip
  expect_tool_link dialog

  local expected
  expected=$(
    printf '%s\n' . ./lib ./lib/zetutils ./lib/zetutils/dialog ./lib/zetutils/gzip \
      ./lib/zetutils/tar ./usr ./usr/local ./usr/local/sbin ./usr/local/sbin/installzet \
      ./usr/local/sbin/removezet ./usr/local/sbin/upgradezet ./usr/local/sbin/zet \
      ./usr/share ./usr/share/zet ./usr/share/zet/lang ./usr/local/share \
      ./usr/local/share/man ./usr/local/share/man/man8 ./usr/local/share/bash-completion \
      ./usr/local/share/bash-completion/completions
    for name in zet installzet removezet upgradezet; do
      echo "./usr/local/share/man/man8/$name.8"
      echo "./usr/local/share/bash-completion/completions/$name"
    done
    for file in "$ZET_SOURCE_DIR"/lang/*.lang; do echo "./usr/share/zet/lang/${file##*/}"; done
  )
  expect_equal "installed tree" "$(sort <<<"$expected")" "$(cd "$dest" && find . | sort)"

  expect_equal "host's installation paths" "$before" "$(host_state)"
}
