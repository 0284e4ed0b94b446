#!/usr/bin/env bash
# Installs a build into a folder that is then moved, and uses that copy as a stranger would: every header by itself, a
# program built with find_package, the same program built with pkg-config and with Meson; with "glib" as the last
# platform, the GObject library from C and from Python. At last the program that has the sources as a part of its own
# project, with shared libraries.
# usage: check.sh <build folder> <C++ compiler> <platform>...
set -euo pipefail
build=$1
export CXX=$2
shift 2
glib=
[ "${!#}" != glib ] || { glib=glib; set -- "${@:1:$#-1}"; }
here=$(cd "$(dirname "$0")" && pwd)
work=$build/install-check  # always the same place, so that a compiler cache knows what has not changed
rm -rf "$work"
mkdir -p "$work"

cmake --install "$build" --prefix "$work/first" >"$work/install.log"
prefix=$work/moved
mv "$work/first" "$prefix"
PKG_CONFIG_PATH=$(dirname "$(find "$prefix" -name velto.pc)")
export PKG_CONFIG_PATH

echo "== every installed header compiles by itself"
modules=$(printf 'velto-%s ' "$@")
# shellcheck disable=SC2086
PC_FLAGS=$(pkg-config --cflags $modules)
export PC_FLAGS
if grep -rlE 'nlohmann|GMemory|<glib|<gio/' "$prefix/include/velto"; then
  echo "the headers above show what is private to the library" >&2
  exit 1
fi
compile_header() {
  local unit=$WORK/headers/${1//\//-}
  echo "#include \"velto/$1\"" >"$unit.cpp"
  # shellcheck disable=SC2086
  $CACHE "$CXX" -std=c++20 -Wall -Wextra -Werror $PC_FLAGS -c "$unit.cpp" -o "$unit.o"
}
export -f compile_header
CACHE=$(command -v ccache || true)
export CACHE WORK=$work
mkdir "$work/headers"
(cd "$prefix/include/velto" && find . -name '*.h' -printf '%P\n') >"$work/list"
[ "$(wc -l <"$work/list")" -gt 50 ]
xargs -P "$(nproc)" -I{} bash -c 'compile_header {}' <"$work/list"

echo "== find_package"
cmake -S "$here/consumer" -B "$work/consumer" -DCMAKE_PREFIX_PATH="$prefix" -DPLATFORMS="$(IFS=\;; echo "$*${glib:+;glib}")" >"$work/cmake.log" ||
  { cat "$work/cmake.log"; exit 1; }
cmake --build "$work/consumer"
"$work/consumer/headless"
[ ! -e "$work/consumer/vast" ] || "$work/consumer/vast"
[ -z "$glib" ] || "$work/consumer/glib"
modules() {
  for module in $(cd "$prefix" && find . -path '*/velto/*velto-*.so' -printf '%f '); do
    "$1" "$module" || { echo "$1 does not find $module" >&2; exit 1; }
  done
}
[ ! -e "$work/consumer/gtk" ] || modules "$work/consumer/gtk"

echo "== pkg-config"
for platform in "$@"; do
  # shellcheck disable=SC2046
  "$CXX" -std=c++20 "$here/consumer/$platform.cpp" -o "$work/$platform" $(pkg-config --cflags --libs "velto-$platform") -pthread
done
if [ -n "$glib" ]; then
  echo "== from C and from scripts"
  # shellcheck disable=SC2046
  cc -Wall -Werror "$here/../../examples/glib/first-banner.c" -o "$work/glib-c" $(pkg-config --cflags --libs velto-glib-1.0)
  for header in "$prefix"/include/velto-{,test-}glib-1.0/*.h; do
    # shellcheck disable=SC2046
    cc -Wall -Werror -fsyntax-only -x c $(pkg-config --cflags velto-test-glib-1.0) -include "$header" /dev/null
  done
  libraries=$(pkg-config --variable=libdir velto-glib-1.0)
  ! LD_LIBRARY_PATH=$libraries ldd "$work/glib-c" | grep 'not found'
  GI_TYPELIB_PATH=$libraries/girepository-1.0 LD_LIBRARY_PATH=$libraries \
    /usr/bin/python3 -c 'import gi; gi.require_version("Velto", "1.0"); from gi.repository import Velto; print(Velto.Client().props.version)'
  if command -v gjs >/dev/null; then
    env -u DISPLAY -u WAYLAND_DISPLAY GI_TYPELIB_PATH="$libraries/girepository-1.0" LD_LIBRARY_PATH="$libraries" \
      gjs "$here/../../examples/glib/test-between-levels.js"
  fi
fi
echo "== Meson"
meson setup "$work/meson" "$here/consumer" -Dplatforms="$(IFS=,; echo "$*${glib:+,glib-1.0}")" >"$work/meson.log" || { cat "$work/meson.log"; exit 1; }
meson compile -C "$work/meson" >"$work/meson.log" || { cat "$work/meson.log"; exit 1; }
"$work/meson/headless"

echo "== a part of another project"
cmake -S "$here/consumer" -B "$work/part" -G Ninja -DVELTO_SOURCE="$here/../.." -DPLATFORMS=headless -DVELTO_GTK=OFF \
  -DBUILD_SHARED_LIBS=ON -DCMAKE_BUILD_TYPE=Debug -DCMAKE_CXX_FLAGS_DEBUG=-O0 >"$work/cmake.log" || { cat "$work/cmake.log"; exit 1; }
cmake --build "$work/part" --target headless >"$work/cmake.log" || { cat "$work/cmake.log"; exit 1; }
"$work/part/headless"
if cmake --install "$work/part" --prefix "$work/part-installed" >/dev/null && [ -e "$work/part-installed" ]; then
  echo "as a part of another project it installs what that did not ask for" >&2
  exit 1
fi

LD_LIBRARY_PATH=$(pkg-config --variable=libdir velto)
export LD_LIBRARY_PATH
"$work/headless"
