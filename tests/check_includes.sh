#!/usr/bin/env bash
# Which folder may include which. Prints each #include that breaks the table and fails if there is one.
# Windows (frm*, and all of shell) may include platform/qt; app/main.cpp may include everything.
set -euo pipefail

cd "$(dirname "${BASH_SOURCE[0]}")/.."
status=0

check() { # SOURCE... FOLDERS
    ! grep -HnE '^#include "' "${@:1:$#-1}" | grep -vE "\"(${!#})/[^/]+\"" || status=1
}

check platform/*.* 'platform'
check platform/qt/*.* 'platform(/qt)?'
check $(ls app/*.* | grep -v main.cpp) 'app|platform'
check link/*.* 'app|link|platform'
check buffer/[!f]*.* 'app|buffer|platform'
check buffer/frm*.* 'app|buffer|platform(/qt)?'
check files/[!f]*.* 'app|buffer|files|platform'
check files/frm*.* 'app|buffer|files|platform(/qt)?'
check functions/[!f]*.* 'app|link|buffer|functions|platform'
check functions/frm*.* 'app|link|buffer|functions|platform(/qt)?'
check shell/*.* shell/help/*.* 'app|link|buffer|files|functions|platform(/qt)?|shell(/help)?'
check simbox/*.* 'simbox'
exit "$status"
