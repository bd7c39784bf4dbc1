# What every test of this folder begins with: what would be installed, below $tree, in a fresh
# scratch folder. Sourced with the test's own arguments, BUILD SCRATCH.

source "$(dirname "${BASH_SOURCE[0]}")/../../scripts/lib/common.sh"

rm -rf "$2"
mkdir -p "$2"
scratch=$(realpath "$2")
tree=$scratch/usr
cmake --install "$1" --prefix "$tree" >"$scratch/install.log"
