#!/usr/bin/env bash
# Which folder may include which. Prints each #include that breaks the table and fails if there is one.
set -euo pipefail

cd "$(dirname "${BASH_SOURCE[0]}")/.."

# What a source of this folder may include, besides its own folder.
declare -A allowed=(
    [platform]=""
    [platform/qt]="platform"
    [app]="platform"
    [link]="app platform"
    [buffer]="app platform"
    [files]="app buffer platform"
    [functions]="app link buffer platform"
    [shell]="app link buffer files functions platform shell/help"
    [shell/help]="app link buffer files functions platform shell"
    [simbox]=""
)

# Windows and main.cpp may include platform/qt, and main.cpp puts everything together.
may_include() { # SOURCE INCLUDED_FOLDER
    local source=$1 folder=${1%/*} target=$2
    [[ $source == app/main.cpp || " $folder ${allowed[$folder]} " == *" $target "* ]] ||
        [[ $target == platform/qt && ($source == shell/* || $source == */frm*) ]]
}

status=0
while IFS=: read -r source line include; do
    target=${include#*\"}
    target=${target%%\"*}
    if ! may_include "$source" "${target%/*}"; then
        echo "$source:$line: may not include $target"
        status=1
    fi
done < <(grep -rnE --include='*.cpp' --include='*.h' '^#include "' $(ls -d "${!allowed[@]}" 2>/dev/null) | sort -u)
exit "$status"
