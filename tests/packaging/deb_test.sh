#!/usr/bin/env bash
# Makes the Debian package with CPack, compares its file list with what it must hold, shows
# its dependencies, and runs lintian on it (any lintian error fails).
# Usage: deb_test.sh BUILD_DIR WORK_DIR SOURCE_DIR PACKAGE_LIB_DIR (e.g. usr/lib/tamlo_matlab_dispatch)
set -euo pipefail
build=$1
work=$2
source_dir=$3
lib=$4
rm -rf "$work"
mkdir -p "$work"

(cd "$build" && cpack -G DEB -B "$work" >"$work/cpack.log" 2>&1) || {
  echo "deb_test: cpack failed:" >&2
  cat "$work/cpack.log" >&2
  exit 1
}
debs=("$work"/*.deb)
[ ${#debs[@]} -eq 1 ] && [ -f "${debs[0]}" ] || { echo "deb_test: expected one .deb in $work" >&2; exit 1; }
deb=${debs[0]}

echo "deb_test: $(basename "$deb")"
dpkg-deb -f "$deb" Package Version Architecture Depends
depends=$(dpkg-deb -f "$deb" Depends)
# The engine embeds Octave: its runtime package must be a dependency.
grep -Eq '(^|, )octave( |,|$)' <<<"$depends" || { echo "deb_test: Depends lacks octave: $depends" >&2; exit 1; }

# Expected files: the programs and libraries, and every example and document of the tree.
doc=usr/share/doc/tamlo-matlab-dispatch
examples=usr/share/tamlo_matlab_dispatch/examples
{
  printf '%s\n' usr/bin/dispatch-bench \
    $lib/libtamlo_matlab_dispatch.so $lib/libmx.so $lib/libeng.so $lib/octave-engine \
    usr/include/tamlo/matrix.h usr/include/tamlo/engine.h \
    usr/share/man/man1/dispatch-bench.1.gz \
    $doc/copyright $doc/changelog.Debian.gz $doc/README.md \
    usr/share/lintian/overrides/tamlo-matlab-dispatch
  (cd "$source_dir/docs" && find . -name '*.md' | sed "s#^\./#$doc/#")
  (cd "$source_dir/examples" && find . \( -name '*.json' -o -name '*.csv' -o -name '*.m' -o -name '*.md' \) |
    sed "s#^\./#$examples/#")
} | sort >"$work/expected.txt"
dpkg-deb -c "$deb" | awk '$1 !~ /^d/ { print $6 }' | sed 's#^\./##' | sort >"$work/actual.txt"
if ! diff -u "$work/expected.txt" "$work/actual.txt" >"$work/contents.diff"; then
  echo "deb_test: package contents differ from the expected files (- expected, + packaged):" >&2
  cat "$work/contents.diff" >&2
  exit 1
fi
echo "deb_test: $(wc -l <"$work/actual.txt") files, as expected"

# The packaged (stripped) programs run from where the package puts them, relative to /usr.
root=$work/root
dpkg-deb -x "$deb" "$root"
(cd "$work" && env -u LD_LIBRARY_PATH "$root/usr/bin/dispatch-bench" run \
  "$root/usr/share/tamlo_matlab_dispatch/examples/hybrid_cycle_charging.json" --steps 3 --quiet >run.log 2>&1) || {
  echo "deb_test: the packaged dispatch-bench failed:" >&2
  cat "$work/run.log" >&2
  exit 1
}
echo "deb_test: the packaged dispatch-bench ran the packaged example"

# Errors fail; warnings are shown. (Overridden tags, in cmake/debian/lintian-overrides, are
# not: shown, they would count as errors.)
lintian --fail-on error "$deb" 2>&1 | { grep -v "running with root privileges" || true; } | tee "$work/lintian.txt"
echo "deb_test: lintian found no errors"
