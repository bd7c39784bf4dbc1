# Shared by the tests of this folder: the files that would be installed, in $tree, in an empty scratch
# folder. Sourced with the test's own arguments, BUILD SCRATCH.

step() { printf '\n== %s\n' "$*"; }
fail() { printf 'FAILED: %s\n' "$*" >&2 && exit 1; }

rm -rf "$2"
mkdir -p "$2"
scratch=$(realpath "$2")
tree=$scratch/usr
cmake --install "$1" --prefix "$tree" >"$scratch/install.log"
