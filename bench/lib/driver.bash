#!/bin/bash
# The benchmarks themselves. bench/run starts this inside the sandbox, chrooted, with zet
# installed and "/" an overlay whose writes land in memory.
#
#   driver.bash SOURCE_DIR "DEB..."
set -euo pipefail

src=$1
read -r -a debs <<<"$2"
runs=${BENCH_RUNS:-5}
lib=$src/bench/lib
W=/bench
mkdir -p "$W"
mount -t tmpfs bench "$W"

log() { echo "bench: $*" >&2; }
now() { date +%s%N; }
# ms START: milliseconds since START.
ms() { echo $((($(now) - $1) / 1000000)); }
# median of the numbers given.
median() { printf '%s\n' "$@" | sort -n | awk '{v[NR]=$1} END{print (NR%2) ? v[(NR+1)/2] : int((v[NR/2]+v[NR/2+1])/2)}'; }
ratio() { awk -v a="$1" -v b="$2" 'BEGIN{ if (b > 0) printf "%.2f", a / b; else print "-" }'; }

cc -O2 -o "$W/floor-remove" "$lib/floor-remove.c"

rows=()
row() { rows+=("$(printf '%-58s %9s %8s' "$1" "$2" "$3")"); }
print_table() {
  echo
  printf '%-58s %9s %8s\n' "what (medians of $runs runs)" "ms" "ratio"
  printf '%s\n' "${rows[@]}"
  echo
  echo "ratio: the first row of each block divided by that row; ratios above 1 mean zet is slower."
}

# --- 1. One removal against a database of 1,500 records --------------------------------
log "synthetic database: generating"
mount -t tmpfs varlog /var/log
mkdir -p /var/log/packages /var/log/scripts /var/log/postinst /var/log/build /var/log/deps \
  /usr/share/zbench
mount -t tmpfs zbench /usr/share/zbench
big=zb-big-1.0-noarch-1
tpl=$W/big-template
mkdir -p "$tpl/files"
# 1,499 small records plus the big one make 300,000 file lines; every third small
# package has a stored doinst script with its link lines.
awk -v big="$big" -v tpl="$tpl" '
  function header(f, name) {
    printf "PACKAGE NAME:     %s\nCOMPRESSED PACKAGE SIZE:     12 K\n", name > f
    printf "UNCOMPRESSED PACKAGE SIZE:     48 K\nPACKAGE LOCATION:     %s.tgz\n", name > f
    printf "PACKAGE DESCRIPTION:\n%s: a synthetic package for the benchmark\nFILE LIST:\n", name > f
  }
  BEGIN {
    total = 300000; small = 1499
    biglines = 3 + 20 + 2000
    rest = total - biglines
    per = int(rest / small); extra = rest - per * small
    split("usr/ usr/bin/ usr/lib/ usr/share/ usr/share/doc/ usr/share/man/ usr/share/man/man1/", shared, " ")
    for (p = 1; p <= small; p++) {
      name = sprintf("zb-pkg%04d-1.0-noarch-1", p)
      short = sprintf("zb-pkg%04d", p)
      f = "/var/log/packages/" name
      header(f, name)
      n = per + (p <= extra ? 1 : 0)
      for (i = 1; i <= 7; i++) print shared[i] > f
      print "usr/share/doc/" short "/" > f
      for (i = 1; i <= n - 8; i++) printf "usr/share/doc/%s/file-%03d.txt\n", short, i > f
      close(f)
      if (p % 3 == 0) {
        s = "/var/log/scripts/" name
        printf "( cd usr/lib ; rm -rf lib%s.so )\n( cd usr/lib ; ln -sf lib%s.so.1 lib%s.so )\n", short, short, short > s
        close(s)
      }
    }
    f = tpl "/record"
    header(f, big)
    print "usr/\nusr/share/\nusr/share/zbench/" > f
    for (d = 0; d < 20; d++) {
      printf "usr/share/zbench/d%02d/\n", d > f
      for (i = 0; i < 100; i++) printf "usr/share/zbench/d%02d/file-%03d.dat\n", d, i > f
    }
    close(f)
    s = tpl "/script"
    for (l = 0; l < 20; l++)
      printf "( cd usr/share/zbench ; rm -rf link-%02d )\n( cd usr/share/zbench ; ln -sf d%02d/file-000.dat link-%02d )\n", l, l, l > s
    close(s)
  }'
for d in $(seq -f %02g 0 19); do
  mkdir -p "$tpl/files/d$d"
  for i in $(seq -f %03g 0 99); do echo "$d $i" >"$tpl/files/d$d/file-$i.dat"; done
  ln -s "d$d/file-000.dat" "$tpl/files/link-$d"
done
lines=$(cat /var/log/packages/* "$tpl/record" | awk '/^FILE LIST:$/{on=1; next} /^PACKAGE NAME:/{on=0} on' | wc -l)
log "synthetic database: $(ls /var/log/packages | wc -l) records + 1, $lines file lines, $(ls /var/log/scripts | wc -l) scripts + 1"

place_big() {
  cp -a "$tpl/files/." /usr/share/zbench/
  cp "$tpl/record" "/var/log/packages/$big"
  cp "$tpl/script" "/var/log/scripts/$big"
}
check_big_gone() {
  local left
  left=$(find /usr/share/zbench -mindepth 1 | wc -l)
  [[ $left == 0 && ! -e /var/log/packages/$big && ! -e /var/log/scripts/$big ]] ||
    { log "removal left $left entries or database files behind"; exit 1; }
}

zr=() fr=()
for ((r = 1; r <= runs; r++)); do
  place_big; sync
  t=$(now); LANG=C removezet --nodeps "$big" >/dev/null 2>&1; zr+=("$(ms "$t")")
  check_big_gone
  place_big; sync
  t=$(now); "$W/floor-remove" "$big"; fr+=("$(ms "$t")")
  check_big_gone
done
place_big
LANG=C /usr/bin/time -v -o "$W/time-v" removezet --nodeps "$big" >/dev/null 2>&1
check_big_gone
rss=$(awk -F': ' '/Maximum resident set size/{print $2}' "$W/time-v")
zrm=$(median "${zr[@]}") frm=$(median "${fr[@]}")
row "removezet --nodeps (2,000 files; 1,500 records, 300k lines)" "$zrm" "$(ratio "$zrm" "$frm")"
row "  floor: one C process, same reads and unlinks" "$frm" "1.00"
row "  peak memory of removezet (max RSS, KiB)" "$rss" ""

# --- queryzet against the same database ---------------------------------------------------
# The big package is back, and, untimed, so are the files and links of every small one, so
# that --verify checks a whole system and finds nothing missing.
log "queryzet: placing the files and links of the small packages"
place_big
awk '/^FILE LIST:$/ { on = 1; next } on' /var/log/packages/zb-pkg* >"$W/small-files"
grep '/$' "$W/small-files" | sort -u | (cd / && xargs mkdir -p)
grep -v '/$' "$W/small-files" | (cd / && xargs touch)
sed -n 's|^( cd \(.*\) ; rm -rf \(.*\) )$|/\1/\2|p' /var/log/scripts/zb-pkg* >"$W/small-links"
while read -r link; do ln -s target "$link"; done <"$W/small-links"
# 99 files of small packages and one of the big one.
owned=(/usr/share/zbench/d10/file-050.dat)
for ((p = 15; p <= 1499; p += 15)); do owned+=("$(printf '/usr/share/doc/zb-pkg%04d/file-001.txt' "$p")"); done
cc -O2 -o "$W/floor-query" "$lib/floor-query.c"
# timed ARRAY CMD...: runs CMD, appends its wall time to ARRAY in ms to a tenth, and gives
# its status. The clock is read without starting a process, so that short rows stay exact.
timed() {
  local -n into=$1
  shift
  local start=${EPOCHREALTIME/./} status=0
  "$@" || status=$?
  local end=${EPOCHREALTIME/./}
  into+=("$(awk -v us=$((end - start)) 'BEGIN { printf "%.1f", us / 1000 }')")
  return "$status"
}
qc=() qr=() qo=() qf=() qv=()
for ((r = 1; r <= runs; r++)); do
  sync; timed qc cat /var/log/packages/* >/dev/null
  sync; timed qr "$W/floor-query" read
  sync; timed qo queryzet --owner "${owned[@]}" >"$W/owners"
  [[ $(wc -l <"$W/owners") == 100 ]] || { log "queryzet --owner did not find 100 owners"; exit 1; }
  sync; timed qf "$W/floor-query" verify || { log "the floor found something missing"; exit 1; }
  sync; timed qv queryzet --verify >"$W/missing" || { log "queryzet --verify found something missing"; exit 1; }
done
/usr/bin/time -v -o "$W/time-o" queryzet --owner "${owned[@]}" >/dev/null
/usr/bin/time -v -o "$W/time-q" queryzet --verify >/dev/null
rsso=$(awk -F': ' '/Maximum resident set size/{print $2}' "$W/time-o")
rssq=$(awk -F': ' '/Maximum resident set size/{print $2}' "$W/time-q")
qcm=$(median "${qc[@]}") qrm=$(median "${qr[@]}") qom=$(median "${qo[@]}")
qfm=$(median "${qf[@]}") qvm=$(median "${qv[@]}")
row "queryzet --owner, 100 paths (1,500 records, 300k lines)" "$qom" "1.00"
row "  cat of every record" "$qcm" "$(ratio "$qom" "$qcm")"
row "  floor: one C process, the reads alone" "$qrm" "$(ratio "$qom" "$qrm")"
row "queryzet --verify of every package (300k paths, 519 links)" "$qvm" "1.00"
row "  floor: one C process, the same reads, an lstat a path" "$qfm" "$(ratio "$qvm" "$qfm")"
row "  peak memory of queryzet --owner, --verify (max RSS, KiB)" "$rsso, $rssq" ""
rm -rf /usr/share/doc/zb-pkg*
xargs rm -f <"$W/small-links"
umount /var/log /usr/share/zbench

# --- 2. Installing and removing a corpus of real packages -------------------------------
((${#debs[@]} > 0)) || { print_table; exit 0; }
mount -t tmpfs varlog /var/log
log "corpus: converting ${#debs[@]} Debian packages"
bash -x "$lib/convert.bash" "$W/pkgs" "${debs[@]}" 2>"$W/convert.log" ||
  { tail -n 20 "$W/convert.log" >&2; log "conversion failed"; exit 1; }
mapfile -t pkgs < <(ls "$W"/pkgs/*.tgz)
mapfile -t fulls < <(for p in "${pkgs[@]}"; do basename "$p" .tgz; done)
mapfile -t dnames < <(for d in "${debs[@]}"; do dpkg-deb -f "$d" Package; done)

# Row (b): the four commands per package that zet runs, each through the shell.
rb=$W/row-b.sh
mkdir -p "$W/zt"
for p in "${pkgs[@]}"; do
  printf 'sh -c "/lib/zetutils/tar tzf %s >%s/filelist"\n' "$p" "$W/zt"
  printf 'sh -c "/lib/zetutils/tar xzf %s -C %s install"\n' "$p" "$W/zt"
  printf 'sh -c "/lib/zetutils/gzip -l %s 1>%s/size-info"\n' "$p" "$W/zt"
  printf 'sh -c "/lib/zetutils/tar -xzlUpf %s -C / 1>/dev/null"\n' "$p"
done >"$rb"
# Row (a): one tar per archive into an empty folder.
ra=$W/row-a.sh
for p in "${pkgs[@]}"; do printf 'tar xzf %s -C %s/floor\n' "$p" "$W"; done >"$ra"
# What the packages put on "/", to take row (b)'s files away again, untimed.
for p in "${pkgs[@]}"; do tar tzf "$p"; done | grep -v '^install/' | sort -u >"$W/all-files"
undo_row_b() {
  rm -rf /install
  grep -v '/$' "$W/all-files" | (cd / && xargs -r rm -f) || true
  grep '/$' "$W/all-files" | sort -r | (cd / && xargs -r rmdir --ignore-fail-on-non-empty 2>/dev/null) || true
}
dpkg_admin() {
  rm -rf "$W/dpkg"
  mkdir -p "$W/dpkg/root" "$W/dpkg/admin/info" "$W/dpkg/admin/updates"
  : >"$W/dpkg/admin/status"; : >"$W/dpkg/admin/available"
}
dpkg_run() {
  dpkg --force-not-root --force-depends --instdir="$W/dpkg/root" --admindir="$W/dpkg/admin" "$@" \
    >/dev/null 2>"$W/dpkg.err" || { log "dpkg failed:"; cat "$W/dpkg.err" >&2; exit 1; }
}

zi=() zx=() bi=() ai=() ax=() di=() dx=()
for ((r = 1; r <= runs; r++)); do
  log "corpus: run $r of $runs"
  sync; t=$(now); LANG=C installzet --nodeps "${pkgs[@]}" >/dev/null 2>"$W/zet-install.err"; zi+=("$(ms "$t")")
  [[ $(ls /var/log/packages | wc -l) == "${#pkgs[@]}" ]] || { log "install incomplete"; exit 1; }
  sync; t=$(now); LANG=C removezet --nodeps "${fulls[@]}" >/dev/null 2>"$W/zet-remove.err"; zx+=("$(ms "$t")")
  [[ $(ls /var/log/packages | wc -l) == 0 ]] || { tail -n 3 "$W/zet-remove.err" >&2; log "removal incomplete"; exit 1; }

  sync; t=$(now); sh "$rb" 2>"$W/row-b.err" || true; bi+=("$(ms "$t")")
  undo_row_b

  mkdir "$W/floor"
  sync; t=$(now); sh "$ra"; ai+=("$(ms "$t")")
  sync; t=$(now); rm -rf "$W/floor"; ax+=("$(ms "$t")")

  dpkg_admin
  sync; t=$(now); dpkg_run -i "${debs[@]}"; di+=("$(ms "$t")")
  sync; t=$(now); dpkg_run --purge "${dnames[@]}"; dx+=("$(ms "$t")")
done
n=${#pkgs[@]}
zim=$(median "${zi[@]}") zxm=$(median "${zx[@]}") bim=$(median "${bi[@]}")
aim=$(median "${ai[@]}") axm=$(median "${ax[@]}") dim=$(median "${di[@]}") dxm=$(median "${dx[@]}")
row "installzet --nodeps, $n packages in one run, on /" "$zim" "1.00"
row "  (b) zet's 4 tool commands per package through sh" "$bim" "$(ratio "$zim" "$bim")"
row "  (a) floor: tar xzf of each into an empty folder" "$aim" "$(ratio "$zim" "$aim")"
row "  (c) dpkg -i of the $n .debs, one run" "$dim" "$(ratio "$zim" "$dim")"
row "removezet --nodeps, $n packages in one run, on /" "$zxm" "1.00"
row "  (a) floor: rm -rf of the floor folder" "$axm" "$(ratio "$zxm" "$axm")"
row "  (c) dpkg --purge of the $n packages, one run" "$dxm" "$(ratio "$zxm" "$dxm")"

# --- 3. getzet: installing the corpus from a repository over HTTP, and a large index ----
# A signed repository of the corpus, served on 127.0.0.1 by a threaded server on a free port.
log "getzet: a repository of the corpus"
mkdir -p "$W/repo/corpus" /etc/zet/keys
cp "${pkgs[@]}" "$W/repo/corpus/"
makezet --new-key "$W/k" >/dev/null
makezet --index "$W/repo/corpus" --sign "$W/k.key" >/dev/null
python3 -c '
import functools, http.server, sys
handler = functools.partial(http.server.SimpleHTTPRequestHandler, directory=sys.argv[1])
handler.func.log_message = lambda *args: None
server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), handler)
open(sys.argv[2], "w").write(str(server.server_port))
server.serve_forever()' "$W/repo" "$W/port" &
server=$!
trap 'kill $server 2>/dev/null || true' EXIT
for i in $(seq 50); do [[ ! -s "$W/port" ]] || break; sleep 0.1; done
url=http://127.0.0.1:$(cat "$W/port")
cp "$W/k.pub" /etc/zet/keys/bench.pub
echo "bench $url/corpus/" >/etc/zet/repos
getzet --update >/dev/null
# What the corpus needs from outside it counts as installed: a record each, no files.
mapfile -t shorts < <(sed -n 's/^Name: //p' "$W/repo/corpus/INDEX")
sed -n 's/^Deps: //p' "$W/repo/corpus/INDEX" | tr ' ' '\n' | sort -u |
  grep -vxF -f <(printf '%s\n' "${shorts[@]}") >"$W/outside" || true
while read -r dep; do
  printf 'PACKAGE NAME:     %s-1-noarch-1\nFILE LIST:\n' "$dep" >"/var/log/packages/$dep-1-noarch-1"
done <"$W/outside"
# The floor: curl of each file one after another, sha256sum, and the installzet commands
# that getzet runs, in its order.
LANG=C getzet --install --dry-run "${shorts[@]}" >"$W/plan"
grep -c '^Would run installzet' "$W/plan" | grep -qx "${#pkgs[@]}" || { log "plan incomplete"; exit 1; }
rf=$W/row-floor.sh
sed -n 's|^Would fetch \([^ ]*\) \(.*\)|curl -sfo '"$W"'/fl/\2 \1\2 \&\& sha256sum '"$W"'/fl/\2 >/dev/null|p' \
  "$W/plan" >"$rf"
sed -n 's|^Would run installzet /var/cache/zet/\(.*\)|installzet '"$W"'/fl/\1 >/dev/null 2>\&1|p' "$W/plan" >>"$rf"
undo_install() {
  LANG=C removezet --nodeps "${fulls[@]}" >/dev/null 2>&1
  [[ $(ls /var/log/packages | wc -l) == $(wc -l <"$W/outside") ]] || { log "removal incomplete"; exit 1; }
  getzet --clean
  rm -rf "$W/fl"
}
installed_all() {
  [[ $(ls /var/log/packages | wc -l) == $((${#pkgs[@]} + $(wc -l <"$W/outside"))) ]] ||
    { log "$1 installed too little"; exit 1; }
}
g1=() g4=() gf=()
for ((r = 1; r <= runs; r++)); do
  log "getzet: run $r of $runs"
  sync; t=$(now); LANG=C getzet --install --jobs 1 "${shorts[@]}" >/dev/null 2>&1; g1+=("$(ms "$t")")
  installed_all "getzet --jobs 1"; undo_install
  sync; t=$(now); LANG=C getzet --install "${shorts[@]}" >/dev/null 2>&1; g4+=("$(ms "$t")")
  installed_all "getzet"; undo_install
  mkdir "$W/fl"
  sync; t=$(now); LANG=C sh -e "$rf"; gf+=("$(ms "$t")")
  installed_all "the floor"; undo_install
done
g1m=$(median "${g1[@]}") g4m=$(median "${g4[@]}") gfm=$(median "${gf[@]}")
row "getzet --install --jobs 1, $n packages over HTTP" "$g1m" "$(ratio "$g1m" "$gfm")"
row "getzet --install (4 jobs), $n packages over HTTP" "$g4m" "$(ratio "$g4m" "$gfm")"
row "  floor: curl, sha256sum, installzet of each" "$gfm" "1.00"

# An index of 10,000 stanzas, signed with a key of the minisign tool, updated under a root of
# its own.
log "getzet: an index of 10,000 stanzas"
mkdir -p "$W/repo/big" "$W/u/etc/zet/keys"
awk 'BEGIN {
  print "Format: zet-index 1\nSerial: 1\nDate: 0"
  for (i = 0; i < 10000; i++) {
    printf "\nName: zb-%05d\nFile: zb-%05d-1.0-noarch-1.tgz\nSize: %d\n", i, i, 10000 + i
    printf "SHA256: %064x\nBuild: 22112026\nDeps: zb-%05d perl\n", i, (i + 1) % 10000
    printf "Description: synthetic package %d of the large index\n", i
  }
}' >"$W/repo/big/INDEX"
minisign -G -W -p "$W/u/etc/zet/keys/big.pub" -s "$W/u.key" >/dev/null
minisign -S -s "$W/u.key" -m "$W/repo/big/INDEX" >/dev/null
echo "big $url/big/" >"$W/u/etc/zet/repos"
gu=()
for ((r = 1; r <= runs; r++)); do
  sync; t=${EPOCHREALTIME/./}
  getzet --root "$W/u" --update >/dev/null || { log "getzet --update failed"; exit 1; }
  gu+=("$(awk -v us=$((${EPOCHREALTIME/./} - t)) 'BEGIN { printf "%.1f", us / 1000 }')")
done
/usr/bin/time -v -o "$W/time-u" getzet --root "$W/u" --update >/dev/null
rssu=$(awk -F': ' '/Maximum resident set size/{print $2}' "$W/time-u")
row "getzet --update, an index of 10,000 stanzas over HTTP" "$(median "${gu[@]}")" ""
row "  peak memory of getzet --update (max RSS, KiB)" "$rssu" ""
kill $server

print_table
