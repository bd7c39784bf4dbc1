# What every test of this folder begins with: the verbs, the program and the simulated box under
# test, and a fresh scratch folder. Sourced with the test's own arguments, QUORVEN SIMBOX SCRATCH.

here=$(cd "$(dirname "${BASH_SOURCE[0]}")" && pwd)
source "$here/../../scripts/lib/common.sh"
source "$here/../../scripts/lib/screen.sh"
source "$here/../../scripts/lib/session.sh"

quorven=$(realpath "$1")
simbox=$(realpath "$2")
data=$(realpath "$here/../../data")
rm -rf "$3"
mkdir -p "$3"
scratch=$(realpath "$3")
row_64k_family_4=8 # of the shipped device list

finish() {
    local status=$?
    ((status == 0)) || show_wreck "$scratch"
    remove_screen
    exit "$status"
}

blocks_written() { (($(grep -c ' status N$' "$scratch/trace.txt") >= $1)); }
